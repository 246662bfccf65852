#include "demo_database.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "korvex/sqlite.hpp"

namespace korvex::cli {
namespace {

// ---- The file, through the library's SQLite handle. The first failure is
// kept as a message for the user and stops all writing: the generator runs
// on without touching the file, and its caller asks once at the end
// instead of at every one of its statements. ----

using Cell = SqlParameter;

class Statement;

class Database {
 public:
  explicit Database(const std::string& path) {
    DatabaseResult<SqliteDatabase> opened =
        SqliteDatabase::open(path, SqliteDatabase::Mode::Create);
    if (opened.ok()) {
      db_.emplace(std::move(opened).value());
    } else {
      failure_ = "无法创建数据库文件 " + path + ": " + toUtf8(opened.error().message);
    }
  }

  bool ok() const noexcept { return failure_.empty(); }
  /// The first failure's message; empty while all went well.
  const std::string& failure() const noexcept { return failure_; }

  void exec(const std::string& sql) {
    if (ok()) check(db_->execute(sql));
  }
  Statement prepare(const std::string& sql);

  /// Keeps `result`'s failure, if any, as the first; true when it has none.
  template <class T>
  bool check(const DatabaseResult<T>& result) {
    if (!result.ok() && ok()) failure_ = "SQL 错误: " + toUtf8(result.error().message);
    return result.ok();
  }

 private:
  std::optional<SqliteDatabase> db_;  // none when the file could not be made
  std::string failure_;
};

class Statement {
 public:
  // `statement` is none when the database had failed already.
  Statement(Database& db, std::optional<SqliteStatement> statement)
      : db_(db), statement_(std::move(statement)) {}

  void run(std::initializer_list<Cell> cells) {
    if (statement_ && db_.ok()) db_.check(statement_->run(cells));
  }

 private:
  Database& db_;
  std::optional<SqliteStatement> statement_;
};

Statement Database::prepare(const std::string& sql) {
  std::optional<SqliteStatement> statement;
  if (ok()) {
    DatabaseResult<SqliteStatement> prepared = db_->prepare(sql);
    if (check(prepared)) statement.emplace(std::move(prepared).value());
  }
  return Statement(*this, std::move(statement));
}

// Removes a file when it goes, unless kept: a run that stops half-way, for
// whatever reason, leaves no half-written database behind.
class RemoveUnlessKept {
 public:
  explicit RemoveUnlessKept(const std::string& path) : path_(path) {}
  ~RemoveUnlessKept() {
    std::error_code ec;
    if (!kept_) std::filesystem::remove(path_, ec);
  }
  RemoveUnlessKept(const RemoveUnlessKept&) = delete;
  RemoveUnlessKept& operator=(const RemoveUnlessKept&) = delete;

  void keep() noexcept { kept_ = true; }

 private:
  std::filesystem::path path_;
  bool kept_ = false;
};

// ---- Deterministic randomness: the same seed gives the same file on every
// platform, which the standard distributions do not promise. ----

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  int between(int lo, int hi) {
    return lo + static_cast<int>(next() % static_cast<std::uint64_t>(hi - lo + 1));
  }
  bool percent(int p) { return between(1, 100) <= p; }
  template <class T, std::size_t N>
  const T& pick(const std::array<T, N>& items) {
    return items[static_cast<std::size_t>(between(0, static_cast<int>(N) - 1))];
  }

 private:
  std::uint64_t state_;
};

// ---- Dates as day numbers (days since 1899-12-30, as date serials count
// them), written as ISO text. ----

constexpr std::chrono::sys_days kDayZero =
    std::chrono::year{1899} / std::chrono::December / std::chrono::day{30};

std::int64_t dayNumber(int year, int month, int day) {
  const std::chrono::sys_days date = std::chrono::year{year} /
                                     std::chrono::month{static_cast<unsigned>(month)} /
                                     std::chrono::day{static_cast<unsigned>(day)};
  return (date - kDayZero).count();
}

int daysInMonth(int year, int month) {
  const auto last = std::chrono::year{year} / std::chrono::month{static_cast<unsigned>(month)} /
                    std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

// 0 = Sunday .. 6 = Saturday.
int dayOfWeek(std::int64_t day) {
  return static_cast<int>(std::chrono::weekday{kDayZero + std::chrono::days{day}}.c_encoding());
}

struct Civil {
  int year, month, day;
};
Civil civil(std::int64_t day) {
  const std::chrono::year_month_day d{kDayZero + std::chrono::days{day}};
  return {static_cast<int>(d.year()), static_cast<int>(static_cast<unsigned>(d.month())),
          static_cast<int>(static_cast<unsigned>(d.day()))};
}

std::string isoDate(std::int64_t day) {
  const Civil d = civil(day);
  char text[16];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", d.year, d.month, d.day);
  return text;
}

std::string twoDigits(int n) {
  char text[8];
  std::snprintf(text, sizeof text, "%02d", n);
  return text;
}

Cell optionalDate(std::int64_t day) { return day == 0 ? Cell{nullptr} : Cell{isoDate(day)}; }
double money(long cents) { return static_cast<double>(cents) / 100.0; }

// ---- The fixed master data. ----

struct Department {
  const char* code;
  const char* name;
};
constexpr std::array<Department, 10> kDepartments{{{"01", "生产部"},
                                                   {"0101", "裁剪车间"},
                                                   {"0102", "缝制车间"},
                                                   {"0103", "后整车间"},
                                                   {"02", "行政部"},
                                                   {"0201", "财务科"},
                                                   {"0202", "人事科"},
                                                   {"03", "销售部"},
                                                   {"0301", "华东销售组"},
                                                   {"0302", "华南销售组"}}};

struct Process {
  const char* index;
  const char* name;
  int priceCents;  // piece rate
  const char* department;
};
struct Product {
  const char* code;
  const char* name;
  const char* size;  // 规格: the product's size or model
  int valueCents;    // output value per finished piece
  std::vector<Process> processes;
};

const std::vector<Product>& products() {
  static const std::vector<Product> kProducts{
      {"1001",
       "男式衬衫",
       "S-XXL",
       4500,
       {{"01", "裁剪", 50, "0101"},
        {"02", "缝制", 180, "0102"},
        {"03", "整烫", 40, "0103"},
        {"04", "包装", 20, "0103"}}},
      {"1002",
       "女式外套",
       "M-XL",
       12800,
       {{"01", "裁剪", 80, "0101"},
        {"02", "缝制", 320, "0102"},
        {"03", "锁钉", 60, "0102"},
        {"04", "整烫", 50, "0103"},
        {"05", "包装", 30, "0103"}}},
      {"1003",
       "牛仔裤",
       "28-36",
       6900,
       {{"01", "裁剪", 60, "0101"},
        {"02", "缝制", 210, "0102"},
        {"03", "水洗", 70, "0103"},
        {"04", "包装", 20, "0103"}}},
      {"1004",
       "儿童T恤",
       "90-140",
       2500,
       {{"01", "裁剪", 30, "0101"}, {"02", "缝制", 90, "0102"}, {"03", "包装", 15, "0103"}}},
  };
  return kProducts;
}

constexpr std::array<const char*, 32> kSurnames{
    "王", "李", "张", "刘", "陈", "杨", "黄", "赵", "吴", "周", "徐", "孙", "马", "朱", "胡", "郭",
    "何", "高", "林", "罗", "郑", "梁", "谢", "宋", "唐", "许", "韩", "冯", "邓", "曹", "彭", "曾"};
constexpr std::array<const char*, 40> kGiven{
    "伟", "芳", "娜", "敏", "静", "丽", "强", "磊", "军", "洋", "勇", "艳", "杰", "娟",
    "涛", "明", "超", "秀", "霞", "平", "刚", "桂", "英", "华", "玉", "兰", "建", "国",
    "海", "红", "梅", "琳", "鹏", "飞", "辉", "斌", "婷", "雪", "慧", "宇"};
constexpr std::array<const char*, 6> kCities{"杭州", "宁波", "温州", "绍兴", "嘉兴", "金华"};
constexpr std::array<const char*, 5> kEducation{"初中", "高中", "中专", "大专", "本科"};
constexpr std::array<const char*, 4> kBanks{"01", "02", "03", "04"};
constexpr std::array<const char*, 3> kGroupSuffix{"一组", "二组", "三组"};

// Posts and titles; base pay by post is in closeMonth and the example
// formula for 基本工资.
struct Post {
  const char* post;
  const char* title;
};
constexpr std::array<Post, 4> kPosts{
    {{"操作工", "职员"}, {"班组长", "组长"}, {"科员", "职员"}, {"主管", "科长"}}};

std::string idNumber(Random& rng, std::int64_t birthday) {
  const Civil b = civil(birthday);
  char body[20];
  std::snprintf(body, sizeof body, "3301%02d%04d%02d%02d%03d", rng.between(2, 9), b.year, b.month,
                b.day, rng.between(1, 999));
  static constexpr std::array<int, 17> kWeights{7, 9, 10, 5,  8, 4, 2, 1, 6,
                                                3, 7, 9,  10, 5, 8, 4, 2};
  int sum = 0;
  for (std::size_t i = 0; i < 17; ++i) sum += (body[i] - '0') * kWeights[i];
  return std::string(body) + "10X98765432"[sum % 11];
}

std::string digits(Random& rng, int count) {
  std::string s;
  for (int i = 0; i < count; ++i) s += static_cast<char>('0' + rng.between(0, 9));
  return s;
}

// ---- The schema. ----

constexpr std::string_view kSchema = R"SQL(
CREATE TABLE Department (cDeptCode TEXT PRIMARY KEY, cDeptName TEXT NOT NULL);
CREATE TABLE Employes (
  cCode TEXT PRIMARY KEY, cName TEXT, cSex TEXT, cID TEXT, cDeptCode TEXT, cCardNum TEXT,
  cWkClass TEXT, cGangWei TEXT, dInTime DATE, dGZTFTime DATE, cMemo TEXT, bForeign BIT,
  cBankID TEXT, dFstMoveDate DATE, cEducation TEXT, cZhiWu TEXT, dBirthday DATE, email TEXT,
  cHome TEXT, cCity TEXT, cCountry TEXT, cOffTel TEXT, cContact TEXT, height DECIMAL(5,1),
  weight DECIMAL(5,1), HairColor TEXT, SkinColor TEXT, MarriageStatus TEXT,
  bLeave BIT NOT NULL DEFAULT 0);
CREATE TABLE WA_WorkClass (
  产品编号 TEXT NOT NULL, 产品名称 TEXT NOT NULL, 年 INTEGER NOT NULL, 月 INTEGER NOT NULL,
  规格 TEXT, 单位 TEXT, 单位产值 MONEY, 定额 INTEGER, 超产单价 MONEY, 末道工序 TEXT,
  bStop BIT NOT NULL DEFAULT 0, PRIMARY KEY (产品编号, 年, 月));
CREATE TABLE wa_workindex (
  产品编号 TEXT NOT NULL, 产品名称 TEXT NOT NULL, cWkIndex TEXT NOT NULL, 工序名称 TEXT,
  单价 MONEY, bEnd BIT NOT NULL DEFAULT 0, PRIMARY KEY (产品名称, cWkIndex));
CREATE TABLE WA_JobData (
  ID INTEGER PRIMARY KEY, 日期 DATE NOT NULL, 工号 TEXT NOT NULL, 部门编号 TEXT,
  产品名称 TEXT, 工序名称 TEXT, cWkIndex TEXT, 计件数量 INTEGER, 单价 MONEY, 单位产值 MONEY,
  nTotalPrice MONEY, 工资合计 MONEY, 是否顶班 BIT NOT NULL DEFAULT 0);
CREATE INDEX WA_JobData_工号 ON WA_JobData (工号, 日期, 工资合计);
CREATE INDEX WA_JobData_日期 ON WA_JobData (日期);
CREATE INDEX WA_JobData_产品 ON WA_JobData (产品名称, cWkIndex);
CREATE TABLE WA_KaoHe (
  ID INTEGER PRIMARY KEY, 日期 DATE NOT NULL, 工号 TEXT NOT NULL, 考核项目 TEXT NOT NULL,
  考核数量 DECIMAL(10,2));
CREATE INDEX WA_KaoHe_工号 ON WA_KaoHe (工号, 考核项目, 日期);
CREATE TABLE WA_Group (日期 DATE NOT NULL, 工号 TEXT NOT NULL, 班组名称 TEXT NOT NULL);
CREATE INDEX WA_Group_工号 ON WA_Group (工号, 日期);
CREATE INDEX WA_Group_班组 ON WA_Group (班组名称, 日期);
CREATE TABLE korvex_procedures (name TEXT PRIMARY KEY, body TEXT NOT NULL);
)SQL";

// CalcByWorkGroup(code, start, end, group, product): the employee's equal
// share of the piece wages his work groups (or the group named) earned in
// the range, optionally of one product only.
constexpr std::string_view kCalcByWorkGroup = R"SQL(WITH
  grp(name) AS (
    SELECT DISTINCT 班组名称 FROM WA_Group
     WHERE COALESCE(:p3, '') = '' AND 工号 = :p0
       AND 日期 BETWEEN date(:p1) AND date(:p2)
    UNION SELECT :p3 WHERE COALESCE(:p3, '') <> ''),
  member(code) AS (
    SELECT DISTINCT 工号 FROM WA_Group
     WHERE 班组名称 IN (SELECT name FROM grp) AND 日期 BETWEEN date(:p1) AND date(:p2))
SELECT CASE WHEN (SELECT COUNT(*) FROM member) = 0 THEN 0.0 ELSE
  ROUND(COALESCE((SELECT SUM(工资合计) FROM WA_JobData
                   WHERE 工号 IN (SELECT code FROM member)
                     AND 日期 BETWEEN date(:p1) AND date(:p2)
                     AND (COALESCE(:p4, '') = '' OR 产品名称 = :p4)), 0)
        / (SELECT COUNT(*) FROM member), 2) END AS 班组工资)SQL";

std::string wageTableName(int year, int month) {
  return "工资表" + std::to_string(year) + "年" + twoDigits(month) + "月";
}

// ---- The generator. ----

struct Employee {
  std::string code, name, dept, post, group;
  std::int64_t hired = 0, stopped = 0;  // day numbers; stopped 0 = still paid
  bool left = false;
  bool production() const { return dept.rfind("01", 0) == 0; }
  bool working(std::int64_t day) const { return day >= hired && (stopped == 0 || day < stopped); }
};

struct Month {
  int year, month;
  std::int64_t first, last;
};

class Generator {
 public:
  Generator(Database& db, const DemoSettings& s) : db_(db), settings_(s), rng_(s.seed) {
    int y = s.firstYear, m = s.firstMonth;
    for (int i = 0; i < s.months; ++i) {
      const std::int64_t first = dayNumber(y, m, 1);
      months_.push_back({y, m, first, first + daysInMonth(y, m) - 1});
      if (++m > 12) m = 1, ++y;
    }
  }

  DemoSummary run() {
    db_.exec(std::string(kSchema));
    departments();
    employees();
    processes();
    jobData();
    workClasses();
    assessments();
    groups();
    wageTables();
    db_.prepare("INSERT INTO korvex_procedures VALUES (?, ?)")
        .run({std::string("CalcByWorkGroup"), std::string(kCalcByWorkGroup)});
    DemoSummary summary;
    summary.employees = settings_.employees;
    summary.months = settings_.months;
    summary.jobRows = jobRows_;
    summary.assessmentRows = assessmentRows_;
    summary.lastWageTable = wageTableName(months_.back().year, months_.back().month);
    return summary;
  }

 private:
  std::int64_t periodStart() const { return months_.front().first; }
  std::int64_t periodEnd() const { return months_.back().last; }

  void departments() {
    Statement insert = db_.prepare("INSERT INTO Department VALUES (?, ?)");
    for (const auto& d : kDepartments) insert.run({std::string(d.code), std::string(d.name)});
  }

  // Four in five work in the three workshops, the rest in offices.
  std::string departmentFor() {
    static constexpr std::array<const char*, 10> kSpread{"0101", "0101", "0102", "0102", "0102",
                                                         "0102", "0103", "0103", "0201", "0202"};
    if (rng_.percent(90)) return rng_.pick(kSpread);
    return rng_.percent(50) ? "0301" : "0302";
  }

  void employees() {
    Statement insert = db_.prepare(
        "INSERT INTO Employes VALUES "
        "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    const int width = settings_.employees >= 100000 ? 6 : 5;
    for (int i = 1; i <= settings_.employees; ++i) {
      Employee e;
      char code[16];
      std::snprintf(code, sizeof code, "%0*d", width, i);
      e.code = code;
      e.name = std::string(rng_.pick(kSurnames)) + rng_.pick(kGiven);
      if (rng_.percent(60)) e.name += rng_.pick(kGiven);
      e.dept = departmentFor();
      const bool female = rng_.percent(e.production() ? 70 : 50);
      const std::int64_t birthday =
          dayNumber(rng_.between(1965, 2003), rng_.between(1, 12), rng_.between(1, 28));
      // Mostly hired years ago; a few join during the period.
      e.hired = rng_.percent(4)
                    ? periodStart() + rng_.between(0, static_cast<int>(periodEnd() - periodStart()))
                    : periodStart() - rng_.between(30, 15 * 365);
      const int fate = rng_.between(1, 100);
      if (fate <= 4) {  // wages stopped during the period
        e.stopped = periodStart() + rng_.between(5, static_cast<int>(periodEnd() - periodStart()));
      } else if (fate <= 8) {  // left, some before the period began
        e.left = true;
        e.stopped =
            periodStart() + rng_.between(-200, static_cast<int>(periodEnd() - periodStart()));
      }
      if (e.stopped != 0 && e.stopped <= e.hired) e.stopped = e.hired + 20;
      const bool office = !e.production();
      const Post& post =
          office ? kPosts[rng_.percent(80) ? 2 : 3] : kPosts[rng_.percent(90) ? 0 : 1];
      e.post = post.post;
      const char* workClass = office             ? (e.dept == "0201"   ? "会计"
                                                    : e.dept == "0202" ? "文员"
                                                                       : "销售员")
                              : e.dept == "0101" ? "裁剪工"
                              : e.dept == "0102" ? "缝纫工"
                                                 : "整烫工";
      const std::string city = rng_.pick(kCities);
      const int height = female ? rng_.between(152, 172) : rng_.between(162, 185);
      insert.run({e.code,
                  e.name,
                  std::string(female ? "女" : "男"),
                  idNumber(rng_, birthday),
                  e.dept,
                  "6222" + digits(rng_, 15),
                  std::string(workClass),
                  e.post,
                  isoDate(e.hired),
                  optionalDate(e.stopped),
                  e.left ? Cell{std::string("已离职")} : Cell{std::string()},
                  static_cast<long long>(rng_.percent(2) ? 1 : 0),
                  std::string(rng_.pick(kBanks)),
                  rng_.percent(20) ? Cell{isoDate(e.hired + rng_.between(90, 900))} : Cell{nullptr},
                  std::string(rng_.pick(kEducation)),
                  std::string(post.title),
                  isoDate(birthday),
                  "e" + e.code + "@example.com",
                  city + "市" + std::to_string(rng_.between(1, 300)) + "号",
                  city,
                  std::string("中国"),
                  "0571-" + digits(rng_, 8),
                  std::string(rng_.pick(kSurnames)) + rng_.pick(kGiven),
                  height / 1.0,
                  static_cast<double>(height - rng_.between(100, 115)),
                  std::string("黑"),
                  std::string("黄"),
                  std::string(rng_.percent(65) ? "已婚" : "未婚"),
                  static_cast<long long>(e.left ? 1 : 0)});
      if (e.production()) {
        const std::string shop =
            std::find_if(kDepartments.begin(), kDepartments.end(), [&](const Department& d) {
              return e.dept == d.code;
            })->name;
        e.group =
            shop.substr(0, shop.size() - std::string("车间").size()) + rng_.pick(kGroupSuffix);
      }
      people_.push_back(std::move(e));
    }
  }

  void processes() {
    Statement insert = db_.prepare("INSERT INTO wa_workindex VALUES (?,?,?,?,?,?)");
    for (const Product& item : products()) {
      for (std::size_t k = 0; k < item.processes.size(); ++k) {
        const Process& step = item.processes[k];
        insert.run({std::string(item.code), std::string(item.name), std::string(step.index),
                    std::string(step.name), money(step.priceCents),
                    static_cast<long long>(k + 1 == item.processes.size() ? 1 : 0)});
      }
    }
  }

  // A row per product and month; the monthly quota is set near what was
  // finished, so that some products beat it and some do not.
  void workClasses() {
    Statement insert = db_.prepare("INSERT INTO WA_WorkClass VALUES (?,?,?,?,?,?,?,?,?,?,?)");
    const auto& all = products();
    for (std::size_t p = 0; p < all.size(); ++p) {
      const Product& item = all[p];
      for (std::size_t m = 0; m < months_.size(); ++m) {
        const bool stopped = !productActive(p, months_[m].first);
        const long finished = finished_[m * all.size() + p];
        const long quota = std::max(100L, finished * rng_.between(80, 105) / 100 / 100 * 100);
        insert.run({std::string(item.code), std::string(item.name),
                    static_cast<long long>(months_[m].year),
                    static_cast<long long>(months_[m].month), std::string(item.size),
                    std::string("件"), money(item.valueCents), static_cast<long long>(quota),
                    money(item.valueCents / 100), std::string(item.processes.back().index),
                    static_cast<long long>(stopped ? 1 : 0)});
      }
    }
  }

  bool productActive(std::size_t p, std::int64_t day) const {
    return !(p + 1 == products().size() && months_.size() > 1 && day >= months_.back().first);
  }

  // Workdays Monday to Friday; on Saturdays a few stand in for absent
  // colleagues (substitute shifts, paid at 1.2 times the piece rate).
  void jobData() {
    Statement insert = db_.prepare(
        "INSERT INTO WA_JobData (日期, 工号, 部门编号, 产品名称, 工序名称, cWkIndex, 计件数量, "
        "单价, 单位产值, nTotalPrice, 工资合计, 是否顶班) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)");
    const auto& all = products();
    finished_.assign(months_.size() * all.size(), 0);
    std::size_t month = 0;
    for (std::int64_t day = periodStart(); day <= periodEnd(); ++day) {
      if (day > months_[month].last) ++month;
      const int weekday = dayOfWeek(day);
      if (weekday == 0) continue;
      const bool saturday = weekday == 6;
      for (const Employee& e : people_) {
        if (!e.production() || !e.working(day)) continue;
        if (saturday ? !rng_.percent(8) : rng_.percent(5)) continue;  // absent
        const int jobs = saturday ? 1 : rng_.between(1, 2);
        for (int j = 0; j < jobs; ++j) {
          std::size_t p =
              static_cast<std::size_t>(rng_.between(0, static_cast<int>(all.size()) - 1));
          if (!productActive(p, day)) p = 0;
          const Product& item = all[p];
          std::vector<std::size_t> steps;
          for (std::size_t k = 0; k < item.processes.size(); ++k) {
            if (e.dept == item.processes[k].department) steps.push_back(k);
          }
          const std::size_t k =
              steps[static_cast<std::size_t>(rng_.between(0, static_cast<int>(steps.size()) - 1))];
          const Process& step = item.processes[k];
          const bool last = k + 1 == item.processes.size();
          const long target = rng_.between(14000, 24000) / jobs;  // a day's wage in cents
          const long pieces = std::max(1L, target / step.priceCents);
          const long total = pieces * step.priceCents;
          const long wage = saturday ? (total * 6 + 2) / 5 : total;
          insert.run({isoDate(day), e.code, e.dept, std::string(item.name), std::string(step.name),
                      std::string(step.index), static_cast<long long>(pieces),
                      money(step.priceCents), money(last ? item.valueCents : 0), money(total),
                      money(wage), static_cast<long long>(saturday ? 1 : 0)});
          ++jobRows_;
          if (last) finished_[month * all.size() + p] += pieces;
        }
      }
    }
  }

  // Every month end: days attended, overtime hours and quality demerits.
  void assessments() {
    Statement insert =
        db_.prepare("INSERT INTO WA_KaoHe (日期, 工号, 考核项目, 考核数量) VALUES (?,?,?,?)");
    for (const Month& m : months_) {
      int workdays = 0;
      for (std::int64_t d = m.first; d <= m.last; ++d) {
        const int w = dayOfWeek(d);
        workdays += w != 0 && w != 6;
      }
      for (const Employee& e : people_) {
        if (!e.working(m.last)) continue;
        const std::string day = isoDate(m.last);
        insert.run({day, e.code, std::string("出勤天数"),
                    static_cast<double>(workdays - (rng_.percent(30) ? rng_.between(1, 3) : 0))});
        insert.run(
            {day, e.code, std::string("加班小时"), static_cast<double>(rng_.between(0, 24))});
        assessmentRows_ += 2;
        if (rng_.percent(15)) {
          insert.run(
              {day, e.code, std::string("质量扣分"), static_cast<double>(rng_.between(1, 5))});
          ++assessmentRows_;
        }
      }
    }
  }

  void groups() {
    Statement insert = db_.prepare("INSERT INTO WA_Group VALUES (?,?,?)");
    for (const Month& m : months_) {
      for (const Employee& e : people_) {
        if (e.production() && e.working(m.last)) insert.run({isoDate(m.first), e.code, e.group});
      }
    }
  }

  // One table per month with a row per employee paid that month. Earlier
  // months are closed: the items the data alone determines are filled in.
  // The last month is open: only base data, the computed items are 0.
  void wageTables() {
    for (std::size_t i = 0; i < months_.size(); ++i) {
      const Month& m = months_[i];
      const std::string table = "[" + wageTableName(m.year, m.month) + "]";
      db_.exec("CREATE TABLE " + table +
               " (工号 TEXT PRIMARY KEY, 姓名 TEXT, 部门编号 TEXT, 年 INTEGER, 月 INTEGER, "
               "基本工资 MONEY DEFAULT 0, 计件工资 MONEY DEFAULT 0, 考核工资 MONEY DEFAULT 0, "
               "顶班工资 MONEY DEFAULT 0, 班组奖金 MONEY DEFAULT 0, 车间奖金 MONEY DEFAULT 0, "
               "超产奖 MONEY DEFAULT 0, 保底补差 MONEY DEFAULT 0, 应发工资 MONEY DEFAULT 0)");
      Statement insert = db_.prepare("INSERT INTO " + table +
                                     " (工号, 姓名, 部门编号, 年, 月) VALUES (?,?,?,?,?)");
      for (const Employee& e : people_) {
        if (!e.working(m.last) && !e.working(m.first)) continue;
        insert.run({e.code, e.name, e.dept, static_cast<long long>(m.year),
                    static_cast<long long>(m.month)});
      }
      if (i + 1 < months_.size()) closeMonth(table, m);
    }
  }

  void closeMonth(const std::string& table, const Month& m) {
    const std::string range = " BETWEEN '" + isoDate(m.first) + "' AND '" + isoDate(m.last) + "'";
    const std::string ym = std::to_string(m.year * 12 + m.month);
    db_.exec(
        "UPDATE " + table +
        " SET 基本工资 = (SELECT CASE e.cGangWei WHEN '班组长' THEN 2800 WHEN '科员' THEN 2600 "
        "WHEN '主管' THEN 3500 ELSE 2200 END + 50 * MIN(10, (" +
        ym +
        " - (CAST(strftime('%Y', e.dInTime) AS INTEGER) * 12 + "
        "CAST(strftime('%m', e.dInTime) AS INTEGER))) / 12) FROM Employes e "
        "WHERE e.cCode = " +
        table +
        ".工号), "
        "计件工资 = COALESCE((SELECT ROUND(SUM(工资合计), 2) FROM WA_JobData j WHERE j.工号 = " +
        table + ".工号 AND j.日期" + range +
        "), 0), "
        "顶班工资 = COALESCE((SELECT ROUND(SUM(工资合计) * 0.1, 2) FROM WA_JobData j "
        "WHERE j.是否顶班 = 1 AND j.工号 = " +
        table + ".工号 AND j.日期" + range +
        "), 0), "
        "考核工资 = COALESCE((SELECT ROUND(SUM(CASE 考核项目 WHEN '加班小时' THEN 20 * 考核数量 "
        "WHEN '质量扣分' THEN -10 * 考核数量 ELSE 0 END), 2) FROM WA_KaoHe k WHERE k.工号 = " +
        table + ".工号 AND k.日期" + range + "), 0)");
    db_.exec("UPDATE " + table + " SET 应发工资 = 基本工资 + 计件工资 + 考核工资 + 顶班工资");
  }

  Database& db_;
  const DemoSettings& settings_;
  Random rng_;
  std::vector<Month> months_;
  std::vector<Employee> people_;
  std::vector<long> finished_;  // pieces at the last step, per month and product
  long jobRows_ = 0;
  long assessmentRows_ = 0;
};

}  // namespace

std::optional<DemoSummary> createDemoDatabase(const std::string& path, const DemoSettings& settings,
                                              std::string& error) {
  std::error_code ec;
  if (std::filesystem::exists(path, ec) || ec) {
    error = "文件已存在, 不会覆盖: " + path;
    return std::nullopt;
  }
  // Made before the database, so that the file is closed by the time it
  // goes.
  RemoveUnlessKept file(path);
  Database db(path);
  db.exec("PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF; BEGIN");
  DemoSummary summary;
  if (db.ok()) {
    Generator generator(db, settings);
    summary = generator.run();
    db.exec("COMMIT");
  }
  if (!db.ok()) {
    error = db.failure();
    return std::nullopt;
  }
  file.keep();
  return summary;
}

}  // namespace korvex::cli
