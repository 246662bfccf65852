/* A C host of libkorvex: a wage formula on a record of a SQLite file, with
 * a host function, typed variables, boxes, limits and two threads.
 *   korvex_capi_tests <scratch database path> */
#include <pthread.h>
#include <stdio.h>
#include <string.h>

#include "korvex.h"

static int failures = 0;
#define CHECK(cond)                                                      \
  do {                                                                   \
    if (!(cond)) {                                                       \
      fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #cond); \
      ++failures;                                                        \
    }                                                                    \
  } while (0)

static int same(const char* text, size_t length, const char* expected) {
  return length == strlen(expected) && memcmp(text, expected, length) == 0;
}

/* _津贴(基数): a tenth of the base; a negative base is refused. */
static int32_t allowance(void* user, korvex_call* call, size_t argc, const korvex_value* args,
                         korvex_value* result) {
  (void)user;
  if (argc != 1 || args[0].type != KORVEX_DOUBLE)
    return korvex_call_fail(call, 13, "类型不匹配", KORVEX_NTS);
  if (args[0].number < 0) return korvex_call_fail(call, KORVEX_ERR_SCRIPT, "基数为负", KORVEX_NTS);
  result->type = KORVEX_DOUBLE;
  result->number = args[0].number / 10;
  return 0;
}

static char lastBox[64];
static int box(void* user, const char* text, size_t length, int32_t buttons, const char* title,
               size_t titleLength) {
  (void)user, (void)buttons, (void)title, (void)titleLength;
  snprintf(lastBox, sizeof lastBox, "%.*s", (int)length, text);
  return KORVEX_ANSWER_YES;
}
static int input(void* user, const char* prompt, size_t promptLength, const char* title,
                 size_t titleLength, const char* def, size_t defLength, korvex_reply* reply) {
  (void)user, (void)prompt, (void)promptLength, (void)title, (void)titleLength, (void)def,
      (void)defLength;
  return korvex_reply_text(reply, "8", KORVEX_NTS) == KORVEX_OK;
}
static int stopAtThree(void* user, int32_t line) { return (void)user, line < 3; }

static korvex_outcome run(korvex_engine* e, const char* script) {
  korvex_outcome out;
  memset(&out, 0, sizeof out);
  CHECK(korvex_set_script(e, script, KORVEX_NTS) == KORVEX_OK);
  CHECK(korvex_run(e, &out) == KORVEX_OK);
  return out;
}

static void wageOnARecord(const char* dbPath) {
  korvex_engine* e = NULL;
  korvex_value v;
  korvex_date_parts day = {2025, 3, 31, 17, 30, 0}, back;
  korvex_outcome out;
  FILE* f = fopen(dbPath, "wb"); /* an empty file is an empty database */
  CHECK(f != NULL);
  if (f) fclose(f);
  CHECK(korvex_engine_new(&e) == KORVEX_OK);
  CHECK(korvex_bind_record(e, "SELECT 1", KORVEX_NTS) == KORVEX_E_REFUSED); /* none open */
  CHECK(korvex_open_database(e, dbPath, KORVEX_NTS) == KORVEX_OK);
  out = run(e,
            "DIM r\r\nr = DoSQL(\"CREATE TABLE 工资 (工号 INTEGER, 姓名 TEXT, 基本工资 REAL)\")\r\n"
            "r = DoSQL(\"INSERT INTO 工资 VALUES (1, '甲', 2000), (2, '乙', 3000)\")\r\n");
  CHECK(out.error_number == 0);
  CHECK(korvex_bind_record(e, "DELETE FROM 工资", KORVEX_NTS) == KORVEX_E_REFUSED);
  CHECK(korvex_bind_record(e, "SELECT * FROM 工资 WHERE 工号 = 2", KORVEX_NTS) == KORVEX_OK);
  CHECK(korvex_register_function(e, "_津贴", KORVEX_NTS, 1, 1, allowance, NULL) == KORVEX_OK);
  CHECK(korvex_register_function(e, "Left", KORVEX_NTS, 1, 1, allowance, NULL) == KORVEX_E_REFUSED);
  CHECK(korvex_set_user_interface(e, box, input, NULL) == KORVEX_OK);

  v.type = KORVEX_CURRENCY, v.integer = 1234567; /* 123.4567 */
  CHECK(korvex_set_var(e, "奖金", KORVEX_NTS, &v) == KORVEX_OK);
  v.type = KORVEX_DATE;
  CHECK(korvex_date_from_parts(&day, &v.number) == KORVEX_OK);
  CHECK(korvex_set_var(e, "发薪", KORVEX_NTS, &v) == KORVEX_OK);
  v.type = KORVEX_INTEGER, v.integer = 40000;
  CHECK(korvex_set_var(e, "坏", KORVEX_NTS, &v) == KORVEX_E_ARGUMENT);

  out = run(
      e,
      "DIM 实发, 名, 次日, 工时, 满\r\n实发 = 基本工资 + _津贴(基本工资)\r\n名 = 姓名 & \"!\"\r\n"
      "次日 = 发薪 + 1\r\n工时 = CLng(Input(\"工时?\"))\r\n满 = 奖金 + 奖金\r\nMSGBOX 名\r\n");
  CHECK(out.error_number == 0 && out.stopped == 0 && out.lines_run == 7);
  CHECK(korvex_get_var(e, "实发", KORVEX_NTS, &v) == KORVEX_OK);
  CHECK(v.type == KORVEX_DOUBLE && v.number == 3300);
  CHECK(korvex_get_var(e, "名", KORVEX_NTS, &v) == KORVEX_OK);
  CHECK(v.type == KORVEX_STRING && same(v.text, v.length, "乙!"));
  CHECK(korvex_get_var(e, "次日", KORVEX_NTS, &v) == KORVEX_OK);
  CHECK(v.type == KORVEX_DATE && korvex_date_to_parts(v.number, &back) == KORVEX_OK);
  CHECK(back.month == 4 && back.day == 1 && back.hour == 17 && back.minute == 30);
  CHECK(korvex_get_var(e, "工时", KORVEX_NTS, &v) == KORVEX_OK);
  CHECK(v.type == KORVEX_LONG && v.integer == 8);
  CHECK(korvex_get_var(e, "满", KORVEX_NTS, &v) == KORVEX_OK);
  CHECK(v.type == KORVEX_CURRENCY && v.integer == 2469134);
  CHECK(strcmp(lastBox, "乙!") == 0);

  out = run(e, "DIM y\r\ny = _津贴(-1)\r\n");
  CHECK(out.error_number == KORVEX_ERR_SCRIPT &&
        same(out.message, out.message_length, "基数为负 : 行号 2"));

  CHECK(korvex_clear(e) == KORVEX_OK);
  CHECK(korvex_get_var(e, "实发", KORVEX_NTS, &v) == KORVEX_E_NOT_FOUND);
  out = run(e, "DIM z\r\nz = 基本工资\r\n"); /* the record went with the clear */
  CHECK(out.error_number == KORVEX_ERR_UNKNOWN_NAME);
  korvex_engine_free(e);
}

static void errorNumbers(void) {
  static const struct {
    const char* line;
    int32_t number;
  } cases[] = {
      {"x = 1 / 0", KORVEX_ERR_EXPRESSION_TYPE},    {"x = CLng(3000000000)", KORVEX_ERR_OVERFLOW},
      {"x = Int(\"a\")", KORVEX_ERR_TYPE_MISMATCH}, {"x = CStr(Null)", KORVEX_ERR_INVALID_NULL},
      {"x = nope", KORVEX_ERR_UNKNOWN_NAME},        {"RaiseError \"停\"", KORVEX_ERR_SCRIPT},
      {"x = Left(1)", KORVEX_ERR_ARGUMENTS},
  };
  size_t i;
  for (i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
    char script[128];
    korvex_engine* e = NULL;
    korvex_outcome out;
    korvex_engine_new(&e);
    snprintf(script, sizeof script, "DIM x\r\n%s\r\n", cases[i].line);
    out = run(e, script);
    if (out.error_number != cases[i].number || out.line != 2) {
      fprintf(stderr, "%s: error %d at line %d: %s\n", cases[i].line, (int)out.error_number,
              (int)out.line, out.message);
      ++failures;
    }
    korvex_engine_free(e);
  }
}

static void stops(void) {
  static const char* endless = "DIM n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop\r\n";
  korvex_engine* e = NULL;
  korvex_outcome out;
  korvex_engine_new(&e);
  CHECK(korvex_set_limits(e, 100, 0) == KORVEX_OK);
  out = run(e, endless);
  CHECK(out.error_number == 0 && out.stopped && out.stop_reason == KORVEX_STOP_STEP_LIMIT);
  CHECK(out.lines_run == 100);
  CHECK(korvex_set_limits(e, 0, 40) == KORVEX_OK);
  out = run(e, endless);
  CHECK(out.error_number == 0 && out.stopped && out.stop_reason == KORVEX_STOP_TIME_LIMIT);
  CHECK(out.lines_run > 100);
  CHECK(korvex_set_limits(e, 0, 0) == KORVEX_OK);
  CHECK(korvex_set_line_hook(e, stopAtThree, NULL) == KORVEX_OK);
  out = run(e, endless);
  CHECK(out.stopped && out.stop_reason == KORVEX_STOP_LINE_HOOK && out.line == 3);
  korvex_engine_free(e);
}

/* A 2 x 3 array in, its bounds seen by the script, its elements back. */
static void arrays(void) {
  korvex_engine* e = NULL;
  korvex_bounds shape[2] = {{1, 2}, {0, 3}}, back[2];
  korvex_value cells[6], v;
  int32_t dims = 0;
  int i;
  for (i = 0; i < 6; ++i) {
    memset(&cells[i], 0, sizeof cells[i]);
    cells[i].type = KORVEX_LONG;
    cells[i].integer = 10 * i;
  }
  cells[5].type = KORVEX_STRING;
  cells[5].text = "末";
  cells[5].length = KORVEX_NTS;
  CHECK(korvex_engine_new(&e) == KORVEX_OK);
  CHECK(korvex_set_array(e, "表", KORVEX_NTS, 2, shape, cells) == KORVEX_OK);
  CHECK(run(e, "DIM u, l\r\nu = UBound(表, 2)\r\nl = LBound(表, 1)\r\n").error_number == 0);
  CHECK(korvex_get_var(e, "u", KORVEX_NTS, &v) == KORVEX_OK && v.integer == 2);
  CHECK(korvex_get_var(e, "l", KORVEX_NTS, &v) == KORVEX_OK && v.integer == 1);
  CHECK(korvex_get_array_shape(e, "表", KORVEX_NTS, &dims, back, 2) == KORVEX_OK);
  CHECK(dims == 2 && back[0].lower == 1 && back[0].count == 2 && back[1].count == 3);
  CHECK(korvex_get_array_element(e, "表", KORVEX_NTS, 4, &v) == KORVEX_OK && v.integer == 40);
  CHECK(korvex_get_array_element(e, "表", KORVEX_NTS, 5, &v) == KORVEX_OK &&
        same(v.text, v.length, "末"));
  CHECK(korvex_get_array_element(e, "表", KORVEX_NTS, 6, &v) == KORVEX_E_NOT_FOUND);
  CHECK(korvex_get_array_shape(e, "u", KORVEX_NTS, &dims, NULL, 0) == KORVEX_E_REFUSED);
  korvex_engine_free(e);
}

/* Row 1's 基本工资, as the database holds it. */
static double firstWage(const char* dbPath) {
  korvex_engine* e = NULL;
  korvex_value v;
  double wage = -1;
  korvex_engine_new(&e);
  korvex_open_database(e, dbPath, KORVEX_NTS);
  if (run(e, "DIM w\r\nw = DoSQL(\"SELECT 基本工资 FROM 工资 WHERE 工号 = 1\")\r\n").error_number ==
          0 &&
      korvex_get_var(e, "w", KORVEX_NTS, &v) == KORVEX_OK) {
    wage = v.number;
  }
  korvex_engine_free(e);
  return wage;
}

/* A batch through the library: row 1 raised, row 2's failure counted and
 * its row left; a record query that would write is refused before any row. */
static void batch(const char* dbPath) {
  const char* script = "If 工号 = 2 Then RaiseError \"停发\"\r\n基本工资 = 基本工资 + 100\r\n";
  const double before = firstWage(dbPath);
  korvex_batch* b = NULL;
  korvex_batch_summary s;
  const char* message = NULL;
  size_t row = 0, length = 0;
  int32_t number = 0, line = 0;
  CHECK(korvex_batch_run(dbPath, "DELETE FROM 工资", KORVEX_NTS, script, KORVEX_NTS, 2, 0, &b) ==
        KORVEX_E_REFUSED);
  CHECK(b != NULL && strlen(korvex_batch_error(b)) > 0);
  korvex_batch_free(b);
  CHECK(korvex_batch_run(dbPath, "SELECT * FROM 工资 ORDER BY 工号", KORVEX_NTS, script, KORVEX_NTS,
                         2, 0, &b) == KORVEX_OK);
  CHECK(korvex_batch_summary_get(b, &s) == KORVEX_OK);
  CHECK(s.rows == 2 && s.done == 2 && s.failed == 1 && s.changed_fields == 1 && s.committed);
  CHECK(korvex_batch_failure(b, 0, &row, &number, &line, &message, &length) == KORVEX_OK);
  CHECK(row == 2 && number == KORVEX_ERR_SCRIPT && line == 1 && length > 0);
  CHECK(korvex_batch_failure(b, 1, NULL, NULL, NULL, NULL, NULL) == KORVEX_E_NOT_FOUND);
  korvex_batch_free(b);
  CHECK(firstWage(dbPath) == before + 100);
}

/* Two engines on two threads: each sums with the host function. */
static void* worker(void* arg) {
  korvex_engine* e = NULL;
  korvex_outcome out;
  korvex_value v;
  double* sum = (double*)arg;
  korvex_engine_new(&e);
  korvex_register_function(e, "_津贴", KORVEX_NTS, 1, 1, allowance, NULL);
  out = run(e,
            "DIM i, s\r\ni = 0\r\ns = 0\r\nDo While i < 300\r\ns = s + _津贴(i * 1.5)\r\n"
            "i = i + 1\r\nLoop\r\n");
  *sum =
      out.error_number == 0 && korvex_get_var(e, "s", KORVEX_NTS, &v) == KORVEX_OK ? v.number : -1;
  korvex_engine_free(e);
  return NULL;
}

static void twoThreads(void) {
  double a = 0, b = 0;
  pthread_t ta, tb;
  CHECK(pthread_create(&ta, NULL, worker, &a) == 0);
  CHECK(pthread_create(&tb, NULL, worker, &b) == 0);
  pthread_join(ta, NULL);
  pthread_join(tb, NULL);
  CHECK(a == b && a - 6727.5 < 1e-6 && 6727.5 - a < 1e-6); /* 0.15 * (0 + ... + 299) */
}

int main(int argc, char** argv) {
  char expected[32];
  snprintf(expected, sizeof expected, "%d.%d.%d", KORVEX_VERSION_MAJOR, KORVEX_VERSION_MINOR,
           KORVEX_VERSION_PATCH);
  CHECK(strcmp(korvex_version(), expected) == 0);
  CHECK(argc == 2);
  if (argc == 2) wageOnARecord(argv[1]);
  if (argc == 2) batch(argv[1]);
  errorNumbers();
  arrays();
  stops();
  twoThreads();
  if (failures) fprintf(stderr, "%d failed\n", failures);
  return failures ? 1 : 0;
}
