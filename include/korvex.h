/* KORVEX for any language: the C interface of the engine (C99, usable from
 * C and C++; the shared library libkorvex exports exactly these functions).
 *
 * An engine runs one payroll script at a time. The host sets the script,
 * sets variables, optionally opens a SQLite database and binds the current
 * record, runs, and reads the outcome and the variables back:
 *
 *   korvex_engine* e = NULL;
 *   korvex_outcome out;
 *   korvex_value pay;
 *   korvex_engine_new(&e);
 *   korvex_set_script(e, "DIM 实发\r\n实发 = 2 * 1500\r\n", KORVEX_NTS);
 *   korvex_run(e, &out);             // out.error_number 0: success
 *   korvex_get_var(e, "实发", KORVEX_NTS, &pay);  // KORVEX_DOUBLE, 3000
 *   korvex_engine_free(e);
 *
 * Status codes: every function returns a korvex_status (KORVEX_OK = 0).
 * A script's own failure is not a failed call: korvex_run returns KORVEX_OK
 * and the outcome carries the error number and message. When a call fails,
 * korvex_last_error gives a one-line reason (UTF-8).
 *
 * Strings: UTF-8. Every string passed in comes with its length in bytes;
 * KORVEX_NTS as the length means "NUL-terminated". Strings handed out
 * (const char* with a length; also NUL-terminated) belong to the engine:
 * the outcome's message stays valid until the next korvex_run, a variable's
 * text until the next korvex_get_var, korvex_last_error's text until the
 * next call on the engine. Copy what you keep.
 *
 * Values: korvex_value is a tagged struct (see below). Arrays and objects
 * are not exchanged yet: reading a variable that holds one gives its type
 * (KORVEX_ARRAY, KORVEX_OBJECT) and nothing else, and setting one is refused
 * with KORVEX_E_ARGUMENT.
 *
 * Threads: one engine is used by one thread at a time (it need not be the
 * thread that created it). Separate engines may run at the same time on
 * separate threads; they share nothing the host can see, and each opens its
 * own connection when given a database (two may open the same file).
 * korvex_request_stop is the exception: it may be called from any thread
 * while the engine exists, typically while another thread is in korvex_run.
 * korvex_version and the date helpers may be called from any thread. The
 * callbacks (host functions, message and input boxes, the line hook) are
 * called on the thread running korvex_run, and must not call back into the
 * same engine except for korvex_call_fail and korvex_reply_text.
 */
#ifndef KORVEX_H
#define KORVEX_H

#include <stddef.h>
#include <stdint.h>

#define KORVEX_VERSION_MAJOR 0
#define KORVEX_VERSION_MINOR 9
#define KORVEX_VERSION_PATCH 0

#if defined(_WIN32)
#define KORVEX_API
#elif defined(KORVEX_BUILDING_LIBRARY)
#define KORVEX_API __attribute__((visibility("default")))
#else
#define KORVEX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A length meaning "the string is NUL-terminated". */
#define KORVEX_NTS ((size_t)-1)

typedef enum korvex_status {
  KORVEX_OK = 0,
  KORVEX_E_ARGUMENT = 1,  /* a null handle or pointer, an unknown type, bad text */
  KORVEX_E_NOT_FOUND = 2, /* no variable of that name */
  KORVEX_E_REFUSED = 3,   /* the engine refused: a function name, a query, ... */
  KORVEX_E_DATABASE = 4,  /* the database could not be opened or queried */
  KORVEX_E_MEMORY = 5,    /* out of memory */
  KORVEX_E_INTERNAL = 6   /* anything else; korvex_last_error says what */
} korvex_status;

/* ---- error numbers a run reports (korvex_outcome.error_number) ---------- */
/* The platform's run-time errors, raised by functions (CLng(3E9): 6,
 * Int("a"): 13, Sqr(-1): 5, CStr(Null): 94); their message carries no
 * " : 行号 n", the outcome's line tells. A fault of an operator inside an
 * expression (1 / 0, 1 + "a") is reported as KORVEX_ERR_EXPRESSION_TYPE. */
#define KORVEX_ERR_INVALID_CALL 5      /* 无效的过程调用或参数 */
#define KORVEX_ERR_OVERFLOW 6          /* 溢出 */
#define KORVEX_ERR_OUT_OF_MEMORY 7     /* 内存溢出 */
#define KORVEX_ERR_SUBSCRIPT 9         /* 下标越界 */
#define KORVEX_ERR_DIVISION_BY_ZERO 11 /* 除数为零 */
#define KORVEX_ERR_TYPE_MISMATCH 13    /* 类型不匹配 */
#define KORVEX_ERR_INTERNAL 51         /* 内部错误; a host function's bad result */
#define KORVEX_ERR_INVALID_NULL 94     /* 无效使用 Null */
#define KORVEX_ERR_RECORD 102          /* the current record refused a call */
#define KORVEX_ERR_CANNOT_CREATE 429   /* no object factory: nothing to create */
/* The engine's own messages (the same numbers as some above, other texts): */
#define KORVEX_ERR_SYNTAX 1             /* 语法错 */
#define KORVEX_ERR_EXPRESSION_TYPE 4    /* 类型不匹配: in an expression, an argument */
#define KORVEX_ERR_UNDEFINED_VARIABLE 5 /* 变量未定义 */
#define KORVEX_ERR_ARGUMENTS 6          /* 错误的参数表达式或参数个数 */
#define KORVEX_ERR_MISSING_OPERAND 51   /* 缺操作数 */
#define KORVEX_ERR_UNKNOWN_NAME 56      /* 遇到不可识别的符号或变量名 */
/* RaiseError in a script: the script's own message. */
#define KORVEX_ERR_SCRIPT 2000
/* A line that cannot be classified, a block left open, an earlier error
 * nobody cleared: the object-error base plus 1500 (negative as int32). */
#define KORVEX_ERR_ENGINE ((int32_t)(0x80040000u + 1500u))

/* ---- values ----------------------------------------------------------- */

typedef enum korvex_type {
  KORVEX_EMPTY = 0,
  KORVEX_NULL = 1,
  KORVEX_INTEGER = 2,  /* 16-bit: integer */
  KORVEX_LONG = 3,     /* 32-bit: integer */
  KORVEX_DOUBLE = 4,   /* number */
  KORVEX_CURRENCY = 5, /* integer: the amount times 10000 */
  KORVEX_DATE = 6,     /* number: days since 1899-12-30, the fraction the time */
  KORVEX_STRING = 7,   /* text, length */
  KORVEX_BOOLEAN = 8,  /* integer: 0 or 1 */
  KORVEX_OBJECT = 9,   /* not exchanged */
  KORVEX_ARRAY = 10    /* through korvex_set_array / korvex_get_array_* */
} korvex_type;

/* One value. Only the members its type names are meaningful. Handed in, a
 * string's text must stay valid for the call (KORVEX_NTS allowed as its
 * length); handed out, it belongs to the engine (see "Strings" above). */
typedef struct korvex_value {
  int32_t type; /* korvex_type */
  int64_t integer;
  double number;
  const char* text;
  size_t length;
} korvex_value;

/* The parts of a date value. */
typedef struct korvex_date_parts {
  int32_t year, month, day, hour, minute, second;
} korvex_date_parts;

/* A date serial from its parts (years 100 to 9999; KORVEX_E_ARGUMENT for a
 * date that does not exist or a time outside 00:00:00..23:59:59). */
KORVEX_API korvex_status korvex_date_from_parts(const korvex_date_parts* parts, double* serial);
/* The parts of a date serial, the time rounded to the second
 * (KORVEX_E_ARGUMENT outside 100-01-01..9999-12-31). */
KORVEX_API korvex_status korvex_date_to_parts(double serial, korvex_date_parts* parts);

/* "0.9.0": the library's version (static storage). */
KORVEX_API const char* korvex_version(void);

/* ---- the engine ------------------------------------------------------- */

typedef struct korvex_engine korvex_engine;

KORVEX_API korvex_status korvex_engine_new(korvex_engine** engine);
/* Frees the engine and everything bound to it; NULL is ignored. */
KORVEX_API void korvex_engine_free(korvex_engine* engine);

/* Why the last call on the engine failed (""; never NULL). */
KORVEX_API korvex_status korvex_last_error(const korvex_engine* engine, const char** message,
                                           size_t* length);

KORVEX_API korvex_status korvex_set_script(korvex_engine* engine, const char* text, size_t length);

/* Defines the variable or assigns it. */
KORVEX_API korvex_status korvex_set_var(korvex_engine* engine, const char* name, size_t name_length,
                                        const korvex_value* value);
/* A variable's value; KORVEX_E_NOT_FOUND when there is no such variable. */
KORVEX_API korvex_status korvex_get_var(korvex_engine* engine, const char* name, size_t name_length,
                                        korvex_value* value);

/* Forgets every variable, the database and the current record, and the
 * last run's error: the engine is ready for the next record. The script,
 * host functions, callbacks and limits stay. */
/* Arrays: `dims` dimensions (1 to 60), each with its lower bound and its
 * number of elements; the elements in row-major order (the last index
 * varies fastest), product-of-counts of them. An element is any value but
 * an array or object. korvex_get_var of an array gives only its type. */
typedef struct korvex_bounds {
  int32_t lower;
  int32_t count;
} korvex_bounds;
KORVEX_API korvex_status korvex_set_array(korvex_engine* engine, const char* name,
                                          size_t name_length, int32_t dims,
                                          const korvex_bounds* bounds,
                                          const korvex_value* elements);
/* The shape of array variable `name`: *dims, and the first `max_dims`
 * bounds into `bounds` (may be NULL). KORVEX_E_REFUSED when it is no array. */
KORVEX_API korvex_status korvex_get_array_shape(korvex_engine* engine, const char* name,
                                                size_t name_length, int32_t* dims,
                                                korvex_bounds* bounds, int32_t max_dims);
/* Element `index` (row-major, from 0) of array variable `name`; its text, if
 * any, belongs to the engine until the next call. */
KORVEX_API korvex_status korvex_get_array_element(korvex_engine* engine, const char* name,
                                                  size_t name_length, size_t index,
                                                  korvex_value* element);
KORVEX_API korvex_status korvex_clear(korvex_engine* engine);

/* ---- running ---------------------------------------------------------- */

typedef enum korvex_stop_reason {
  KORVEX_STOP_NONE = 0,       /* the run ended by itself, with or without error */
  KORVEX_STOP_REQUEST = 1,    /* korvex_request_stop, confirmed by the message box */
  KORVEX_STOP_LINE_HOOK = 2,  /* the line hook returned 0, confirmed likewise */
  KORVEX_STOP_STEP_LIMIT = 3, /* the step limit was reached */
  KORVEX_STOP_TIME_LIMIT = 4  /* the time limit had passed */
} korvex_stop_reason;

typedef struct korvex_outcome {
  int32_t error_number; /* 0: no error (a stopped run has none either) */
  const char* message;  /* the error's text, ending in " : 行号 n"; "" */
  size_t message_length;
  int32_t line;        /* the line being run when the run ended (1-based) */
  int32_t stopped;     /* 1 when stopped before its end: see stop_reason */
  int32_t stop_reason; /* korvex_stop_reason */
  int64_t lines_run;   /* lines of the script started */
} korvex_outcome;

/* Runs the script from line 1, the last run's error cleared first;
 * variables carry over from earlier runs (korvex_clear forgets them). */
KORVEX_API korvex_status korvex_run(korvex_engine* engine, korvex_outcome* outcome);

/* Limits of every later run, checked before each line (0: none). A run
 * that reaches one ends there without an error, stopped. A single slow line
 * (a long SQL query) is not cut short. */
KORVEX_API korvex_status korvex_set_limits(korvex_engine* engine, int64_t max_lines,
                                           int64_t max_milliseconds);

/* Any thread: asks the running script to stop before its next line. The
 * message box is asked "确信终止程序吗?" (Yes/No; without a message-box
 * callback the answer is Yes). A request made while no run is active is
 * dropped when the next run starts. */
KORVEX_API korvex_status korvex_request_stop(korvex_engine* engine);

/* Called before each line with its number; returning 0 asks to stop, as
 * korvex_request_stop does. NULL removes the hook. */
typedef int (*korvex_line_hook)(void* user, int32_t line);
KORVEX_API korvex_status korvex_set_line_hook(korvex_engine* engine, korvex_line_hook hook,
                                              void* user);

/* ---- message and input boxes -------------------------------------------- */

typedef enum korvex_buttons { KORVEX_BUTTONS_OK = 0, KORVEX_BUTTONS_YES_NO = 1 } korvex_buttons;
typedef enum korvex_answer {
  KORVEX_ANSWER_OK = 0,
  KORVEX_ANSWER_YES = 1,
  KORVEX_ANSWER_NO = 2
} korvex_answer;

/* MsgBox: returns a korvex_answer. The texts are valid during the call. */
typedef int (*korvex_message_box)(void* user, const char* text, size_t text_length, int32_t buttons,
                                  const char* title, size_t title_length);

typedef struct korvex_reply korvex_reply;
/* The input box's answer, from inside an input-box callback (copied). */
KORVEX_API korvex_status korvex_reply_text(korvex_reply* reply, const char* text, size_t length);
/* InputBox: returns 1 after korvex_reply_text, 0 when the user cancelled. */
typedef int (*korvex_input_box)(void* user, const char* prompt, size_t prompt_length,
                                const char* title, size_t title_length, const char* default_text,
                                size_t default_length, korvex_reply* reply);

/* The engine's message and input boxes go to these callbacks; either may be
 * NULL: message boxes then answer Yes/OK and input boxes are cancelled. */
KORVEX_API korvex_status korvex_set_user_interface(korvex_engine* engine,
                                                   korvex_message_box message_box,
                                                   korvex_input_box input_box, void* user);

/* ---- host functions ---------------------------------------------------- */

typedef struct korvex_call korvex_call;

/* A host function: argument i is args[i] (the texts valid during the call).
 * Fills *result (its text is copied after the return) and returns 0, or
 * returns an error number, after korvex_call_fail for a message of its
 * own. */
typedef int32_t (*korvex_function)(void* user, korvex_call* call, size_t argc,
                                   const korvex_value* args, korvex_value* result);

/* Adds a function scripts call by `name` with min_args..max_args arguments
 * (0..100; min_args -1: any number). KORVEX_E_REFUSED when the name is no
 * script name or is a built-in function or constant. The same name again
 * replaces the function. */
KORVEX_API korvex_status korvex_register_function(korvex_engine* engine, const char* name,
                                                  size_t name_length, int32_t min_args,
                                                  int32_t max_args, korvex_function function,
                                                  void* user);

/* From inside a host function: reports `number` with the message (the run
 * ends with it, the line added); returns `number` for the function to
 * return. */
KORVEX_API int32_t korvex_call_fail(korvex_call* call, int32_t number, const char* message,
                                    size_t length);

/* ---- the database ------------------------------------------------------- */

/* Opens a SQLite database file, or a PostgreSQL server's database for a
 * connection string (postgresql://... or host=... dbname=...) that names
 * no file: the script's data functions and its Parent connection use it.
 * KORVEX_E_DATABASE when the file is missing or the database cannot be
 * opened. */
KORVEX_API korvex_status korvex_open_database(korvex_engine* engine, const char* path,
                                              size_t path_length);

/* Runs one read-only query on the open database and makes its first row
 * the current record: its fields read as variables, and assignments to
 * them are written back. KORVEX_E_REFUSED when no database is open or the
 * text is no single query; KORVEX_E_DATABASE when the query fails. */
KORVEX_API korvex_status korvex_bind_record(korvex_engine* engine, const char* sql,
                                            size_t sql_length);

/* ---- a month's batch ---------------------------------------------------- */
/* Runs `script` once for every row of `record_sql` on the SQLite file
 * `db_path`, each row on an engine of its own with that row as the current
 * record, on `jobs` threads (1 to 64), and writes the fields the rows
 * assigned back to their rows in one transaction, committed at the end (or,
 * with `dry_run`, nothing). Rows whose script fails are counted and written
 * not at all. The batch needs no engine: it makes its own. On KORVEX_OK
 * `*batch` holds the outcome; on KORVEX_E_REFUSED or KORVEX_E_DATABASE
 * (nothing was computed: a database that cannot be written, a record query
 * that would write or whose rows cannot be traced to one table's rows)
 * `*batch` holds only the reason, korvex_batch_error. Free it with
 * korvex_batch_free. Thread-safe: every call has its own connections.
 * With a PostgreSQL connection string as `db_path` the month is shared with
 * every other process running it: rows are claimed and committed in small
 * groups, and `rows` and `done` count the rows this call ran. */
typedef struct korvex_batch korvex_batch;
typedef struct korvex_batch_summary {
  size_t rows;           /* rows of the record query */
  size_t done;           /* rows run */
  size_t failed;         /* rows whose script or write-back failed */
  size_t changed_rows;   /* successful rows that changed a field */
  size_t changed_fields; /* the fields whose value changed */
  int committed;         /* the writes were committed */
} korvex_batch_summary;

KORVEX_API korvex_status korvex_batch_run(const char* db_path, const char* record_sql,
                                          size_t record_length, const char* script,
                                          size_t script_length, unsigned jobs, int dry_run,
                                          korvex_batch** batch);
KORVEX_API korvex_status korvex_batch_summary_get(const korvex_batch* batch,
                                                  korvex_batch_summary* summary);
/* Failed row `index` (from 0, in row order): its row (from 1), error number,
 * script line (0: writing it back failed) and message (UTF-8, owned by the
 * batch). KORVEX_E_NOT_FOUND past the last. */
KORVEX_API korvex_status korvex_batch_failure(const korvex_batch* batch, size_t index, size_t* row,
                                              int32_t* error_number, int32_t* line,
                                              const char** message, size_t* message_length);
/* Why a batch could not run ("" when it ran). */
KORVEX_API const char* korvex_batch_error(const korvex_batch* batch);
KORVEX_API void korvex_batch_free(korvex_batch* batch);

#ifdef __cplusplus
}
#endif

#endif /* KORVEX_H */
