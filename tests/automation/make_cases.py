#!/usr/bin/env python3
"""Turns the end-to-end script cases (tests/scripts) into VBScript calls of
the automation component, so that the component and the Linux command are
checked against the same expected outcomes.

    make_cases.py SCRIPTS_DIR OUT_BASE

writes OUT_BASE.vbs (ASCII: the case procedures, to be put after checks.vbs
and stand_ins.vbs) and OUT_BASE.strings (UTF-16, the texts with non-ASCII
characters, which the VBScript reads by key). A case is taken when its
options are ones a host of the component can reproduce: --set with a plain
literal, --answer, and --db @DB@ with --record and --trace-sql when a
NAME.rows file gives the record's rows and the answer to every SQL text
(see tests/scripts/README.md). Every other case is skipped with a note on
standard output and in the report.
"""
import decimal
import json
import re
import sys
from pathlib import Path


class Skip(Exception):
    pass


class Texts:
    """The strings file: each run of non-ASCII characters gets a key."""

    def __init__(self):
        self.keys = {}

    def key(self, text):
        if text not in self.keys:
            self.keys[text] = str(len(self.keys) + 1)
        return self.keys[text]

    def vb(self, s):
        """A VBScript expression for the string s."""
        parts = []
        run = ""
        kind = None  # "a" printable ASCII, "u" other characters

        def flush():
            if run == "":
                return
            if kind == "a":
                parts.append('"' + run.replace('"', '""') + '"')
            else:
                parts.append("T(" + self.key(run) + ")")

        for ch in s:
            code = ord(ch)
            if code < 0x20 or code == 0x7F:
                flush()
                run, kind = "", None
                parts.append("Chr(%d)" % code)
                continue
            k = "a" if code < 0x7F else "u"
            if k != kind:
                flush()
                run, kind = "", k
            run += ch
        flush()
        return " & ".join(parts) if parts else '""'

    def write(self, path):
        lines = ["%s\t%s" % (k, t) for t, k in self.keys.items()]
        data = "".join(line + "\r\n" for line in lines)
        path.write_bytes(b"\xff\xfe" + data.encode("utf-16-le"))


DATE = re.compile(r"^(\d{4})-(\d{1,2})-(\d{1,2})(?:[ T](\d{1,2}):(\d{2})(?::(\d{2}))?)?$")
NUMBER = re.compile(r"^-?\d+(\.\d+)?([eE][-+]?\d+)?$")


def vb_date(text):
    m = DATE.match(text)
    if not m:
        raise Skip("date %r is not YYYY-MM-DD[ HH:MM:SS]" % text)
    parts = [int(p) if p else 0 for p in m.groups()]
    return "MakeDate(%d, %d, %d, %d, %d, %d)" % tuple(parts)


def vb_number(text):
    text = str(text)
    if not NUMBER.match(text):
        raise Skip("number %r cannot be written in VBScript" % text)
    return text.upper()


def expected_value(texts, v):
    """Array(type, value) as checks.vbs compares it, from the JSON form."""
    kind = v["type"]
    value = v.get("value")
    if kind == "Array":
        lbs = v["lbound"]

        def nested(level):
            return "Array(" + ", ".join(
                nested(x) if isinstance(x, list) else expected_value(texts, x)
                for x in level) + ")"

        return 'Array("Array", Array(%s), %s)' % (
            ", ".join(str(b) for b in lbs), nested(value))
    if kind in ("Empty", "Null", "Object"):
        return 'Array("%s", Empty)' % kind
    if kind == "Integer":
        return 'Array("Integer", CInt(%s))' % vb_number(value)
    if kind == "Long":
        return 'Array("Long", CLng(%s))' % vb_number(value)
    if kind == "Double":
        return 'Array("Double", CDbl(%s))' % vb_number(value)
    if kind == "Currency":
        return 'Array("Currency", CCur(%s))' % vb_number(value)
    if kind == "Date":
        return 'Array("Date", %s)' % vb_date(value)
    if kind == "String":
        return 'Array("String", %s)' % texts.vb(value)
    if kind == "Boolean":
        return 'Array("Boolean", %s)' % ("True" if value else "False")
    raise Skip("value type %s" % kind)


def preset_value(texts, expr):
    """A --set expression the host can hand over as a value: a literal."""
    e = expr.strip()
    if NUMBER.match(e):
        return "CDbl(%s)" % e.upper()
    if len(e) >= 2 and e[0] == '"' and e[-1] == '"' and '"' not in e[1:-1].replace('""', ""):
        return texts.vb(e[1:-1].replace('""', '"'))
    if len(e) >= 2 and e[0] == "#" and e[-1] == "#":
        return vb_date(e[1:-1].strip())
    if e.upper() == "NULL":
        return "Null"
    if e.upper() in ("TRUE", "FALSE"):
        return e.capitalize()
    raise Skip("--set %s is no literal" % expr)


ROW_TYPES = {"String", "Integer", "Long", "Double", "Currency", "Date", "Boolean"}


def row_value(texts, text, kind):
    if text == "NULL":
        return "Null"
    if kind == "String":
        return texts.vb("" if text == '""' else text)
    if kind == "Date":
        return vb_date(text)
    if kind == "Boolean":
        if text not in ("True", "False"):
            raise Skip("Boolean cell %r" % text)
        return text
    conv = {"Integer": "CInt", "Long": "CLng", "Double": "CDbl", "Currency": "CCur"}[kind]
    return "%s(%s)" % (conv, vb_number(text))


def read_rows(path, texts):
    """The record and the prepared answers of NAME.rows as VBScript
    argument lists (names, types, rows)."""
    blocks = []
    current = None
    for raw in path.read_text(encoding="utf-8").splitlines():
        if raw.startswith("#"):
            continue
        if raw.strip() == "":
            current = None
            continue
        if current is None:
            if raw == "record":
                current = {"sql": None}
            elif raw.startswith("sql "):
                current = {"sql": raw[4:]}
            else:
                raise Skip("%s: a block starts with 'record' or 'sql TEXT', not %r" % (path.name, raw))
            blocks.append(current)
            continue
        cells = [c.strip() for c in raw.split("|")]
        if "header" not in current:
            names, types = [], []
            for c in cells:
                name, _, kind = c.rpartition(" ")
                if kind not in ROW_TYPES or not name:
                    raise Skip("%s: field %r needs 'NAME TYPE'" % (path.name, c))
                names.append(name)
                types.append(kind)
            current["header"] = (names, types)
            current["rows"] = []
            continue
        names, types = current["header"]
        if len(cells) != len(names):
            raise Skip("%s: row %r has %d cells for %d fields" % (path.name, raw, len(cells), len(names)))
        current["rows"].append([row_value(texts, c, k) for c, k in zip(cells, types)])

    record, answers = None, []
    for b in blocks:
        if "header" not in b:
            raise Skip("%s: a block without its field line" % path.name)
        names, types = b["header"]
        args = "Array(%s), Array(%s), Array(%s)" % (
            ", ".join(texts.vb(n) for n in names),
            ", ".join('"%s"' % k for k in types),
            ", ".join("Array(%s)" % ", ".join(r) for r in b["rows"]))
        if b["sql"] is None:
            record = args
        else:
            answers.append((b["sql"], args))
    return record, answers


def read_args(path):
    if not path.exists():
        return []
    return [a for a in path.read_text(encoding="utf-8").replace("\r\n", "\n").split("\n") if a != ""]


def make_case(name, folder, texts, number):
    expected_text = (folder / (name + ".json")).read_text(encoding="utf-8").strip()
    if not expected_text:
        raise Skip("a usage error (no outcome)")
    expected = json.loads(expected_text, parse_float=decimal.Decimal)

    args = read_args(folder / (name + ".args"))
    presets, answers = [], []
    db = record_sql = False
    i = 0
    while i < len(args):
        a = args[i]
        value = args[i + 1] if i + 1 < len(args) else None
        if a == "--db" and value == "@DB@":
            db = True
            i += 2
        elif a == "--record" and value is not None:
            record_sql = True
            i += 2
        elif a == "--trace-sql":
            i += 1
        elif a == "--set" and value is not None and "=" in value:
            var, _, expr = value.partition("=")
            presets.append((var.strip(), preset_value(texts, expr)))
            i += 2
        elif a == "--answer" and value is not None:
            answers.append(texts.vb(value))
            i += 2
        else:
            raise Skip("option %s is the command's own" % a)

    record, sql_answers = None, []
    if db:
        rows = folder / (name + ".rows")
        if not rows.exists():
            raise Skip("no %s.rows with the prepared answers" % name)
        record, sql_answers = read_rows(rows, texts)
        if record_sql and record is None:
            raise Skip("%s.rows has no record block" % name)
    elif record_sql:
        raise Skip("--record without --db")

    raw = (folder / (name + ".bas")).read_bytes()
    if raw.startswith(b"\xef\xbb\xbf"):
        raw = raw[3:]
    try:
        script = raw.decode("utf-8")
    except UnicodeDecodeError:
        raise Skip("the script is no UTF-8")

    out = ["Sub Case%d()" % number, "  Dim e, ui, conn, rs", '  Say "case %s"' % name,
           '  Set e = CreateObject("Morlan.BasicEngine")',
           "  Set ui = NewUserInterface(Array(%s))" % ", ".join(answers),
           "  Set e.UserInterface = ui"]
    if db:
        out.append("  Set conn = New StandInConnection")
        for sql, a in sql_answers:
            out.append("  conn.Answer %s, %s" % (texts.vb(sql), a))
        out.append("  Set e.Parent = NewParent(conn)")
        # DoSQL and DoSqlEx open connections of their own; a component
        # without a way to route their creation fails those cases alone.
        out += ["  On Error Resume Next", "  Set e.ObjectFactory = NewObjectFactory(conn)",
                "  On Error GoTo 0"]
    if record_sql:
        out.append("  Set rs = NewRecordSet(%s)" % record)
        out.append("  Set e.RecordSet = rs")
    for var, value in presets:
        out.append("  e.SetSysVar %s, %s" % (texts.vb(var), value))
    out.append("  e.CodeBlock = %s" % texts.vb(script))
    out.append("  e.Execute")
    p = "%s " % name
    for key, member in (("errNum", "ErrNum"), ("currentLine", "CurrentLineNum"),
                        ("lineCount", "LineCount"), ("ifCount", "IfCount"),
                        ("doCount", "DoCount"), ("flagCount", "StmtFlagCount")):
        out.append('  CheckNumber "%s%s", e.%s, %d' % (p, key, member, expected[key]))
    out.append('  CheckEqual "%serrMsg", e.ErrMsg, %s' % (p, texts.vb(expected["errMsg"])))
    for var, v in expected["variables"].items():
        name = texts.vb(var)
        out.append('  Check "%svariable " & %s & " defined", e.IsVarDefined(%s), "IsVarDefined is False"'
                   % (p, name, name))
        out.append('  CheckValue "%svariable " & %s, e.GetVarValue(%s), %s'
                   % (p, name, name, expected_value(texts, v)))
    out.append('  CheckList "%smessages", ui.Messages, Array(%s)'
               % (p, ", ".join(texts.vb(m) for m in expected["messages"])))
    if "fields" in expected:
        out.append('  CheckFields "%sfields", rs.Written, Array(%s)' % (p, ", ".join(
            "%s, %s" % (texts.vb(f), expected_value(texts, v)) for f, v in expected["fields"].items())))
    if "sql" in expected:
        out.append('  CheckList "%ssql", conn.Received, Array(%s)'
                   % (p, ", ".join(texts.vb(s) for s in expected["sql"])))
    if db:
        out.append('  CheckList "%sSQL texts without an answer", conn.Unexpected, Array()' % p)
    out.append("End Sub")
    return out


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: make_cases.py SCRIPTS_DIR OUT_BASE")
    folder, base = Path(sys.argv[1]), Path(sys.argv[2])
    texts = Texts()
    procedures, calls = [], []
    for bas in sorted(folder.glob("*.bas")):
        name = bas.stem
        try:
            procedures += make_case(name, folder, texts, len(calls) + 1)
            calls.append(name)
        except Skip as why:
            print("skip %s: %s" % (name, why))
            procedures.append('\' skipped: %s' % name)
            calls.append(None)
    main_lines = ["OpenChecks", "On Error Resume Next"]
    taken = 0
    for number, name in enumerate(calls, 1):
        if name is None:
            continue
        taken += 1
        main_lines += ["Case%d" % number, 'CheckNoError "%s runs"' % name]
    skipped = [b.stem for b in sorted(folder.glob("*.bas")) if b.stem not in calls]
    if skipped:
        main_lines.append('Say "skipped: %s"' % ", ".join(skipped))
    main_lines.append('FinishChecks "shared cases"')
    body = main_lines + [""] + procedures
    base.with_suffix(".vbs").write_text("\r\n".join(body) + "\r\n", encoding="ascii")
    texts.write(base.with_suffix(".strings"))
    print("%d cases taken, %d skipped" % (taken, len(skipped)))


if __name__ == "__main__":
    main()
