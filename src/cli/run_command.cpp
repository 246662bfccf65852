#include "run_command.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <memory>

#include "database.hpp"
#include "json.hpp"
#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/locale.hpp"
#include "korvex/system_error.hpp"
#include "korvex/user_interface.hpp"
#include "korvex/workbook.hpp"
#include "output.hpp"
#include "presets.hpp"

namespace korvex::cli {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

// The console, except that input prompts take the replies given with
// --answer (and are cancelled once those run out).
class AnsweringConsole : public ConsoleUserInterface {
 public:
  AnsweringConsole(std::istream& in, std::ostream& out, std::vector<std::u16string> answers)
      : ConsoleUserInterface(in, out), answers_(std::move(answers)) {}

  std::optional<std::u16string> inputBox(std::u16string_view, std::u16string_view,
                                         std::u16string_view) override {
    if (next_ >= answers_.size()) return std::nullopt;
    return answers_[next_++];
  }

 private:
  std::vector<std::u16string> answers_;
  std::size_t next_ = 0;
};

// Ctrl-C asks the running script to stop (the engine's stop prompt then
// decides); a second Ctrl-C before that is settled ends the process, the
// stop prompt included.
BasicEngine* volatile gRunning = nullptr;
volatile std::sig_atomic_t gInterrupts = 0;
// The count the previous line started with.
volatile std::sig_atomic_t gInterruptsAtLastLine = 0;

extern "C" void onInterrupt(int) {
  gInterrupts = gInterrupts + 1;
  if (gInterrupts >= 2 || gRunning == nullptr) {
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
    return;
  }
  gRunning->RequestStop();
}

// Runs at the top of every line, just before the engine would show the stop
// prompt. A Ctrl-C that came since the previous line is about to be asked
// about, so it still counts; one the prompt has been shown for (and answered
// No) is settled, and counting starts afresh.
bool countInterruptsAfresh(std::int16_t) {
  if (gInterrupts == gInterruptsAtLastLine) gInterrupts = 0;
  gInterruptsAtLastLine = gInterrupts;
  return true;
}

class InterruptGuard {
 public:
  explicit InterruptGuard(BasicEngine& engine) {
    gInterrupts = 0;
    gInterruptsAtLastLine = 0;
    gRunning = &engine;
    previous_ = std::signal(SIGINT, onInterrupt);
  }
  ~InterruptGuard() {
    std::signal(SIGINT, previous_ == SIG_ERR ? SIG_DFL : previous_);
    gRunning = nullptr;
  }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  void (*previous_)(int) = SIG_DFL;
};

// No script is longer than 32767 characters, and no bytes decode to fewer
// than one character per four bytes (byte-order mark aside): a text longer
// than this is too long whatever it holds, so reading stops one byte past it
// and the engine reports the over-long script as it reports any other.
constexpr std::size_t kLongestScriptBytes = 4 * 32767 + kUtf8Bom.size();

// Reads a descriptor to its end or one byte past the longest script; false
// on a read error (a directory, an I/O failure), which stream buffers would
// pass off as the end of the file.
bool readDescriptor(int fd, std::string& bytes) {
  char buffer[1 << 16];
  while (bytes.size() <= kLongestScriptBytes) {
    const std::size_t wanted = std::min(sizeof buffer, kLongestScriptBytes + 1 - bytes.size());
    const ssize_t n = ::read(fd, buffer, wanted);
    if (n == 0) return true;
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.append(buffer, static_cast<std::size_t>(n));
  }
  return true;
}

bool readStream(std::istream& in, std::string& bytes) {
  char buffer[1 << 16];
  while (bytes.size() <= kLongestScriptBytes && in) {
    const std::size_t wanted = std::min(sizeof buffer, kLongestScriptBytes + 1 - bytes.size());
    in.read(buffer, static_cast<std::streamsize>(wanted));
    bytes.append(buffer, static_cast<std::size_t>(in.gcount()));
  }
  return !in.bad();
}

std::optional<std::string> readAll(const std::string& path, std::istream& in, std::string& error) {
  std::string bytes;
  if (path == "-") {
    // The process's own standard input is read directly, so that a failed
    // read is told from an empty script; other streams come from tests.
    const bool ok = &in == &std::cin ? readDescriptor(STDIN_FILENO, bytes) : readStream(in, bytes);
    if (!ok) {
      error = std::string("无法从标准输入读取脚本: ") + systemErrorText(errno);
      return std::nullopt;
    }
    return bytes;
  }
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = "无法打开 '" + path + "': " + systemErrorText(errno);
    return std::nullopt;
  }
  const bool ok = readDescriptor(fd, bytes);
  const int readErrno = errno;
  ::close(fd);
  if (!ok) {
    error = "无法读取 '" + path + "': " + systemErrorText(readErrno);
    return std::nullopt;
  }
  return bytes;
}

std::vector<std::u16string> toUtf16(const std::vector<std::string>& texts) {
  std::vector<std::u16string> out;
  out.reserve(texts.size());
  for (const auto& t : texts) out.push_back(fromUtf8(t));
  return out;
}

RunOutcome outcomeOf(const BasicEngine& engine, const RecordingUserInterface& ui) {
  RunOutcome r;
  r.errNum = engine.ErrNum();
  r.errMsg = engine.ErrMsg();
  r.currentLine = engine.CurrentLineNum();
  r.lineCount = engine.LineCount();
  r.ifCount = engine.IfCount();
  r.doCount = engine.DoCount();
  r.flagCount = engine.StmtFlagCount();
  r.variables = engine.Variables();
  r.messages = ui.messages();
  return r;
}

// The sheet --sheet names: a number is its position, anything else a name.
Value sheetSelector(const std::string& text) {
  const bool number =
      !text.empty() && text.find_first_not_of("0123456789") == std::string::npos && text.size() < 9;
  return number ? Value::lng(std::stoi(text)) : Value::string(fromUtf8(text));
}

// Opens --workbook and --sheet on the engine; false after reporting why.
bool attachWorkbook(const RunOptions& options, BasicEngine& engine, std::shared_ptr<Workbook>& book,
                    std::ostream& err) {
  if (options.workbook.empty()) return true;
  std::u16string error;
  book = Workbook::open(options.workbook, error);
  if (!book) {
    err << "korvex: " << toUtf8(error) << '\n';
    return false;
  }
  engine.SetExcelBook(book);
  if (options.sheet.empty()) return true;
  const DispatchResult sheet = book->sheet(sheetSelector(options.sheet));
  if (!sheet.ok()) {
    err << "korvex: --sheet " << options.sheet << ": " << toUtf8(sheet.description) << '\n';
    return false;
  }
  engine.SetActiveExcelSheet(sheet.value.objectValue());
  return true;
}

}  // namespace

std::optional<std::string> readScriptBytes(const std::string& path, std::istream& in,
                                           std::string& error) {
  return readAll(path, in, error);
}

int runScript(const RunOptions& options, std::istream& in, std::ostream& out, std::ostream& err) {
  std::string readError;
  const std::optional<std::string> bytes = readAll(options.script, in, readError);
  if (!bytes) {
    err << "korvex: " << readError << '\n';
    return kExitUsage;
  }

  BasicEngine engine;
  DatabaseSession database;
  if (std::string dbError; !database.attach(options, engine, dbError)) {
    err << "korvex: " << dbError << '\n';
    return kExitUsage;
  }
  std::shared_ptr<Workbook> book;
  if (!attachWorkbook(options, engine, book, err)) return kExitUsage;
  if (const Locale* loc = Locale::byName(options.locale)) engine.SetLocale(*loc);

  std::shared_ptr<RecordingUserInterface> recorder;
  if (options.json) {
    recorder = std::make_shared<RecordingUserInterface>(toUtf16(options.answers));
    engine.SetUserInterface(recorder);
  } else if (options.answersGiven) {
    engine.SetUserInterface(std::make_shared<AnsweringConsole>(in, out, toUtf16(options.answers)));
  } else {
    engine.SetUserInterface(std::make_shared<ConsoleUserInterface>(in, out));
  }

  // Each preset is set before the next is evaluated: a later one may use it.
  std::string presetError;
  if (!evaluatePresets(engine, options.presets, presetError,
                       [&engine](std::u16string name, Value value) {
                         engine.SetSysVar(name, std::move(value));
                       })) {
    err << "korvex: " << presetError << '\n';
    return kExitUsage;
  }

  engine.SetCodeBlock(decodeScript(*bytes, options.encoding, &err));
  {
    InterruptGuard guard(engine);
    engine.SetLineHook(countInterruptsAfresh);
    engine.Execute();
  }

  // The database keeps the run's writes only when it succeeded.
  std::string endError;
  const bool ended = database.finish(!options.dryRun && engine.ErrNum() == 0, endError);
  if (!ended) err << "korvex: " << endError << '\n';

  // Cells written before an error are kept, as in an open spreadsheet; a
  // dry run writes the workbook only to a --save target.
  bool saved = true;
  if (book && book->modified() && (!options.dryRun || !options.save.empty())) {
    std::u16string error;
    saved = book->save(options.save.empty() ? options.workbook : options.save, error);
    if (!saved) err << "korvex: " << toUtf8(error) << '\n';
  }

  std::string outcomeText;
  if (options.json) {
    RunOutcome outcome = outcomeOf(engine, *recorder);
    outcome.sql = database.traced();
    outcome.fields = database.assigned();
    outcomeText = outcomeJson(outcome) + '\n';
  }
  if (!writeOutcome(out, err, outcomeText)) return kExitUsage;
  if (!options.json && engine.ErrNum() != 0) {
    err << "\xE9\x94\x99\xE8\xAF\xAF " << engine.ErrNum() << ": "  // 错误
        << toUtf8(engine.ErrMsg()) << '\n';
  }
  if (!saved) return kExitUsage;
  return engine.ErrNum() == 0 && ended ? kExitSuccess : kExitScriptFailed;
}

}  // namespace korvex::cli
