"""KORVEX from Python through the C interface (libkorvex.so), with ctypes only.

    import korvex
    with korvex.Engine() as e:
        e["基本工资"] = 3000.0
        e.register_function("_津贴", lambda base: base / 10, 1, 1)
        outcome = e.run("DIM 实发\\r\\n实发 = 基本工资 + _津贴(基本工资)\\r\\n")
        print(outcome.error_number, e["实发"])        # 0 3300.0

Values map to Python types both ways: Empty and Null -> None (None sets
Null), Integer and Long -> int (an int sets a Long, or a Double beyond 32
bits), Double -> float, Currency -> decimal.Decimal (4 places),
Date -> datetime.datetime, String -> str, Boolean -> bool. Arrays and
objects are not exchanged.

The library is looked for in $KORVEX_LIBRARY, then as libkorvex.so.0 on the
loader's path. One Engine is used by one thread at a time; request_stop may
be called from any thread.
"""

import ctypes
import datetime
import decimal
import os
from dataclasses import dataclass

NTS = ctypes.c_size_t(-1).value

EMPTY, NULL, INTEGER, LONG, DOUBLE, CURRENCY, DATE, STRING, BOOLEAN = range(9)
STOP_REASONS = {0: None, 1: "request", 2: "line hook", 3: "step limit", 4: "time limit"}


class Value(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int32), ("integer", ctypes.c_int64),
                ("number", ctypes.c_double), ("text", ctypes.c_void_p),
                ("length", ctypes.c_size_t)]


class DateParts(ctypes.Structure):
    _fields_ = [(n, ctypes.c_int32) for n in ("year", "month", "day", "hour", "minute", "second")]


class _Outcome(ctypes.Structure):
    _fields_ = [("error_number", ctypes.c_int32), ("message", ctypes.c_void_p),
                ("message_length", ctypes.c_size_t), ("line", ctypes.c_int32),
                ("stopped", ctypes.c_int32), ("stop_reason", ctypes.c_int32),
                ("lines_run", ctypes.c_int64)]


FUNCTION = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t,
                            ctypes.POINTER(Value), ctypes.POINTER(Value))
MESSAGE_BOX = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t,
                               ctypes.c_int32, ctypes.c_void_p, ctypes.c_size_t)
INPUT_BOX = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t,
                             ctypes.c_void_p, ctypes.c_size_t, ctypes.c_void_p, ctypes.c_size_t,
                             ctypes.c_void_p)
LINE_HOOK = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_int32)


class _Bounds(ctypes.Structure):
    _fields_ = [("lower", ctypes.c_int32), ("count", ctypes.c_int32)]


class _BatchSummary(ctypes.Structure):
    _fields_ = [("rows", ctypes.c_size_t), ("done", ctypes.c_size_t), ("failed", ctypes.c_size_t),
                ("changed_rows", ctypes.c_size_t), ("changed_fields", ctypes.c_size_t),
                ("committed", ctypes.c_int)]


def _load():
    lib = ctypes.CDLL(os.environ.get("KORVEX_LIBRARY") or "libkorvex.so.0")
    P, S, I32, I64 = ctypes.c_void_p, ctypes.c_size_t, ctypes.c_int32, ctypes.c_int64
    for name, args in {
            "korvex_engine_new": [ctypes.POINTER(P)],
            "korvex_last_error": [P, ctypes.POINTER(P), ctypes.POINTER(S)],
            "korvex_set_script": [P, ctypes.c_char_p, S],
            "korvex_set_var": [P, ctypes.c_char_p, S, ctypes.POINTER(Value)],
            "korvex_get_var": [P, ctypes.c_char_p, S, ctypes.POINTER(Value)],
            "korvex_clear": [P],
            "korvex_run": [P, ctypes.POINTER(_Outcome)],
            "korvex_set_limits": [P, I64, I64],
            "korvex_request_stop": [P],
            "korvex_set_line_hook": [P, LINE_HOOK, P],
            "korvex_set_user_interface": [P, MESSAGE_BOX, INPUT_BOX, P],
            "korvex_reply_text": [P, ctypes.c_char_p, S],
            "korvex_register_function": [P, ctypes.c_char_p, S, I32, I32, FUNCTION, P],
            "korvex_open_database": [P, ctypes.c_char_p, S],
            "korvex_bind_record": [P, ctypes.c_char_p, S],
            "korvex_date_from_parts": [ctypes.POINTER(DateParts), ctypes.POINTER(ctypes.c_double)],
            "korvex_date_to_parts": [ctypes.c_double, ctypes.POINTER(DateParts)],
            "korvex_set_array": [P, ctypes.c_char_p, S, I32, ctypes.POINTER(_Bounds),
                                 ctypes.POINTER(Value)],
            "korvex_get_array_shape": [P, ctypes.c_char_p, S, ctypes.POINTER(I32),
                                       ctypes.POINTER(_Bounds), I32],
            "korvex_get_array_element": [P, ctypes.c_char_p, S, S, ctypes.POINTER(Value)],
            "korvex_batch_run": [ctypes.c_char_p, ctypes.c_char_p, S, ctypes.c_char_p, S,
                                 ctypes.c_uint, ctypes.c_int, ctypes.POINTER(P)],
            "korvex_batch_summary_get": [P, ctypes.POINTER(_BatchSummary)],
            "korvex_batch_failure": [P, S, ctypes.POINTER(S), ctypes.POINTER(I32),
                                     ctypes.POINTER(I32), ctypes.POINTER(P),
                                     ctypes.POINTER(S)]}.items():
        fn = getattr(lib, name)
        fn.argtypes, fn.restype = args, ctypes.c_int
    lib.korvex_engine_free.argtypes, lib.korvex_engine_free.restype = [P], None
    lib.korvex_call_fail.argtypes = [P, I32, ctypes.c_char_p, S]
    lib.korvex_call_fail.restype = I32
    lib.korvex_version.restype = ctypes.c_char_p
    lib.korvex_batch_error.argtypes, lib.korvex_batch_error.restype = [P], ctypes.c_char_p
    lib.korvex_batch_free.argtypes, lib.korvex_batch_free.restype = [P], None
    return lib


_lib = _load()
version = _lib.korvex_version().decode()


class KorvexError(Exception):
    """A call the library refused: status is the korvex_status code."""

    def __init__(self, status, message):
        super().__init__(f"korvex status {status}: {message}")
        self.status = status


class ScriptError(Exception):
    """Raised by a host function: ends the run with number and message."""

    def __init__(self, number, message):
        super().__init__(message)
        self.number = number


@dataclass
class Outcome:
    error_number: int
    message: str
    line: int
    stop_reason: str  # None, "request", "line hook", "step limit", "time limit"
    lines_run: int

    @property
    def stopped(self):
        return self.stop_reason is not None

    @property
    def ok(self):
        return self.error_number == 0


def _product(counts):
    result = 1
    for n in counts:
        result *= n
    return result


def _text(pointer, length):
    return ctypes.string_at(pointer, length).decode("utf-8") if length else ""


def to_python(v):
    if v.type in (EMPTY, NULL):
        return None
    if v.type in (INTEGER, LONG):
        return v.integer
    if v.type == DOUBLE:
        return v.number
    if v.type == CURRENCY:
        return decimal.Decimal(v.integer).scaleb(-4)
    if v.type == DATE:
        p = DateParts()
        if _lib.korvex_date_to_parts(v.number, ctypes.byref(p)) != 0:
            raise ValueError(f"date serial {v.number} out of range")
        return datetime.datetime(p.year, p.month, p.day, p.hour, p.minute, p.second)
    if v.type == STRING:
        return _text(v.text, v.length)
    if v.type == BOOLEAN:
        return bool(v.integer)
    raise TypeError("arrays and objects are not exchanged")


def from_python(x, keep):
    """A Value for x; `keep` holds the bytes a string points to."""
    v = Value()
    if x is None:
        v.type = NULL
    elif isinstance(x, bool):
        v.type, v.integer = BOOLEAN, int(x)
    elif isinstance(x, int):
        if -2**31 <= x < 2**31:
            v.type, v.integer = LONG, x
        else:
            v.type, v.number = DOUBLE, float(x)
    elif isinstance(x, float):
        v.type, v.number = DOUBLE, x
    elif isinstance(x, decimal.Decimal):
        v.type, v.integer = CURRENCY, int((x * 10000).to_integral_value(decimal.ROUND_HALF_EVEN))
    elif isinstance(x, (datetime.datetime, datetime.date)):
        t = x if isinstance(x, datetime.datetime) else datetime.datetime(x.year, x.month, x.day)
        p = DateParts(t.year, t.month, t.day, t.hour, t.minute, t.second)
        serial = ctypes.c_double()
        if _lib.korvex_date_from_parts(ctypes.byref(p), ctypes.byref(serial)) != 0:
            raise ValueError(f"{x} cannot be a date value")
        v.type, v.number = DATE, serial.value
    elif isinstance(x, str):
        data = x.encode("utf-8")
        keep.append(data)
        v.type, v.text, v.length = STRING, ctypes.cast(ctypes.c_char_p(data), ctypes.c_void_p), len(data)
    else:
        raise TypeError(f"no script value for {type(x).__name__}")
    return v


class Engine:
    """One engine: a script, its variables, and optionally a database."""

    def __init__(self):
        handle = ctypes.c_void_p()
        self._check(_lib.korvex_engine_new(ctypes.byref(handle)), "korvex_engine_new")
        self._handle = handle
        self._callbacks = []  # the C callbacks must live as long as the engine

    def close(self):
        if getattr(self, "_handle", None):
            _lib.korvex_engine_free(self._handle)
            self._handle = None

    __del__ = close

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def _check(self, status, what):
        if status == 0:
            return
        message = ""
        if getattr(self, "_handle", None):
            text, length = ctypes.c_void_p(), ctypes.c_size_t()
            _lib.korvex_last_error(self._handle, ctypes.byref(text), ctypes.byref(length))
            message = _text(text.value, length.value)
        raise KorvexError(status, f"{what}: {message}")

    def run(self, script=None):
        if script is not None:
            data = script.encode("utf-8")
            self._check(_lib.korvex_set_script(self._handle, data, len(data)), "set_script")
        o = _Outcome()
        self._check(_lib.korvex_run(self._handle, ctypes.byref(o)), "run")
        return Outcome(o.error_number, _text(o.message, o.message_length), o.line,
                       STOP_REASONS.get(o.stop_reason), o.lines_run)

    def __setitem__(self, name, value):
        """A list (of lists, rectangular) becomes an array, lower bounds 0."""
        keep, data = [], name.encode("utf-8")
        if isinstance(value, (list, tuple)):
            shape, flat = [], value
            while isinstance(flat, (list, tuple)):
                shape.append(len(flat))
                flat = flat[0] if flat else None
            elements = value
            for _ in shape[1:]:
                elements = [x for row in elements for x in row]
            if len(elements) != _product(shape):
                raise ValueError("an array's lists must all be as long")
            bounds = (_Bounds * len(shape))(*[_Bounds(0, n) for n in shape])
            values = (Value * max(len(elements), 1))(*[from_python(x, keep) for x in elements])
            self._check(_lib.korvex_set_array(self._handle, data, len(data), len(shape), bounds,
                                              values), name)
            return
        v = from_python(value, keep)
        self._check(_lib.korvex_set_var(self._handle, data, len(data), ctypes.byref(v)), name)

    def __getitem__(self, name):
        """An array comes out as lists (of lists), its lower bounds dropped."""
        v, data = Value(), name.encode("utf-8")
        status = _lib.korvex_get_var(self._handle, data, len(data), ctypes.byref(v))
        if status == 2:
            raise KeyError(name)
        self._check(status, name)
        if v.type != 10:
            return to_python(v)
        dims = ctypes.c_int32()
        bounds = (_Bounds * 60)()
        self._check(_lib.korvex_get_array_shape(self._handle, data, len(data), ctypes.byref(dims),
                                                bounds, 60), name)
        flat = []
        for i in range(_product([bounds[d].count for d in range(dims.value)])):
            self._check(_lib.korvex_get_array_element(self._handle, data, len(data), i,
                                                      ctypes.byref(v)), name)
            flat.append(to_python(v))
        for d in reversed(range(1, dims.value)):
            n = bounds[d].count
            flat = [flat[i:i + n] for i in range(0, len(flat), n)]
        return flat

    def clear(self):
        self._check(_lib.korvex_clear(self._handle), "clear")

    def set_limits(self, max_lines=0, max_milliseconds=0):
        self._check(_lib.korvex_set_limits(self._handle, max_lines, max_milliseconds), "limits")

    def request_stop(self):
        _lib.korvex_request_stop(self._handle)

    def set_line_hook(self, hook):
        """hook(line) -> bool: False asks to stop; None removes it."""
        c = LINE_HOOK(lambda _user, line: 1 if hook(line) else 0) if hook else LINE_HOOK()
        self._callbacks.append(c)
        self._check(_lib.korvex_set_line_hook(self._handle, c, None), "line hook")

    def set_user_interface(self, message_box=None, input_box=None):
        """message_box(text, yes_no, title) -> True for Yes (a message box with
        only OK ignores the answer); input_box(prompt, title, default) -> str,
        or None for cancel."""
        def box(_user, text, length, buttons, title, title_length):
            yes = message_box(_text(text, length), buttons == 1, _text(title, title_length))
            return 1 if yes or buttons == 0 else 2

        def ask(_user, prompt, plen, title, tlen, default, dlen, reply):
            answer = input_box(_text(prompt, plen), _text(title, tlen), _text(default, dlen))
            if answer is None:
                return 0
            data = answer.encode("utf-8")
            return 1 if _lib.korvex_reply_text(reply, data, len(data)) == 0 else 0

        c = (MESSAGE_BOX(box) if message_box else MESSAGE_BOX(),
             INPUT_BOX(ask) if input_box else INPUT_BOX())
        self._callbacks.append(c)
        self._check(_lib.korvex_set_user_interface(self._handle, c[0], c[1], None), "boxes")

    def register_function(self, name, fn, min_args=0, max_args=0):
        """fn(*args) -> value; raising ScriptError(number, message) ends the
        run with that error, any other exception with 51 and its text."""
        def call(_user, handle, argc, args, result):
            try:
                keep = []
                value = from_python(fn(*[to_python(args[i]) for i in range(argc)]), keep)
                # The engine copies the result's text only after the return.
                self._last_result = keep
                result[0] = value
                return 0
            except ScriptError as e:
                number, message = e.number, str(e)
            except Exception as e:  # noqa: BLE001 - the run reports it
                number, message = 51, str(e) or type(e).__name__
            data = message.encode("utf-8")
            return _lib.korvex_call_fail(handle, number, data, len(data))

        c = FUNCTION(call)
        self._callbacks.append(c)
        data = name.encode("utf-8")
        self._check(_lib.korvex_register_function(self._handle, data, len(data), min_args,
                                                  max_args, c, None), name)

    def open_database(self, path):
        data = os.fsencode(path)
        self._check(_lib.korvex_open_database(self._handle, data, len(data)), "open_database")

    def bind_record(self, sql):
        data = sql.encode("utf-8")
        self._check(_lib.korvex_bind_record(self._handle, data, len(data)), "bind_record")


def run_batch(db_path, record_sql, script, jobs=1, dry_run=False):
    """Runs script for every row of record_sql on the SQLite file db_path
    and writes the rows back in one transaction (nothing with dry_run).
    Returns the summary as a dict, its "failures" a list of (row, error
    number, line, message); raises KorvexError when nothing could run."""
    handle = ctypes.c_void_p()
    sql, text = record_sql.encode("utf-8"), script.encode("utf-8")
    status = _lib.korvex_batch_run(os.fsencode(db_path), sql, len(sql), text, len(text), jobs,
                                   1 if dry_run else 0, ctypes.byref(handle))
    try:
        if status != 0:
            why = _lib.korvex_batch_error(handle).decode("utf-8") if handle else ""
            raise KorvexError(status, why or "korvex_batch_run")
        s = _BatchSummary()
        _lib.korvex_batch_summary_get(handle, ctypes.byref(s))
        summary = {name: getattr(s, name) for name, _ in _BatchSummary._fields_}
        summary["committed"] = bool(s.committed)
        summary["failures"] = []
        row, length = ctypes.c_size_t(), ctypes.c_size_t()
        number, line, message = ctypes.c_int32(), ctypes.c_int32(), ctypes.c_void_p()
        while _lib.korvex_batch_failure(handle, len(summary["failures"]), ctypes.byref(row),
                                        ctypes.byref(number), ctypes.byref(line),
                                        ctypes.byref(message), ctypes.byref(length)) == 0:
            summary["failures"].append((row.value, number.value, line.value,
                                        _text(message.value, length.value)))
        return summary
    finally:
        if handle:
            _lib.korvex_batch_free(handle)
