#!/usr/bin/env python3
"""make_cases.py SCRIPTS_DIR OUT_BASE: the cases of tests/scripts as VBScript
calls of the automation component (OUT_BASE.vbs), their non-ASCII texts in
OUT_BASE.strings (UTF-16, read by key). Skips, with a note, a case whose
options no host can reproduce."""
import decimal
import json
import re
import sys
from pathlib import Path


class Skip(Exception):
    pass


texts = {}
DATE = re.compile(r"(\d{4})-(\d{1,2})-(\d{1,2})(?:[ T](\d{1,2}):(\d{2})(?::(\d{2}))?)?$")
NUMBER = re.compile(r"-?\d+(\.\d+)?([eE][-+]?\d+)?$")
CONVERT = {"Integer": "CInt", "Long": "CLng", "Double": "CDbl", "Currency": "CCur"}


def vb(s):
    """s as VBScript: printable ASCII quoted, the rest by Chr or by key."""
    parts = []
    for run in re.findall(r"[\x20-\x7e]+|[\x00-\x1f\x7f]|[^\x00-\x7f]+", s):
        if run[0] < " " or run == "\x7f":
            parts.append("Chr(%d)" % ord(run))
        elif run[0] <= "~":
            parts.append('"%s"' % run.replace('"', '""'))
        else:
            parts.append("T(%s)" % texts.setdefault(run, str(len(texts) + 1)))
    return " & ".join(parts) or '""'


def typed(kind, value):
    if kind in CONVERT and NUMBER.match(str(value)):
        return "%s(%s)" % (CONVERT[kind], str(value).upper())
    if kind == "Date" and DATE.match(value):
        return "MakeDate(%s)" % ", ".join(str(int(p or 0)) for p in DATE.match(value).groups())
    if kind == "String" or kind == "Boolean" and value in (True, False, "True", "False"):
        return vb(value) if kind == "String" else str(value in (True, "True"))
    raise Skip("%s %r" % (kind, value))


def expected(v):
    if v["type"] == "Array":
        def nested(level):
            return "Array(%s)" % ", ".join(nested(x) if isinstance(x, list) else expected(x) for x in level)
        return "Array(Array(%s), %s)" % (", ".join(map(str, v["lbound"])), nested(v["value"]))
    return {"Empty": "Empty", "Null": "Null", "Object": "Nothing"}.get(v["type"]) or typed(v["type"], v.get("value"))


def preset(expr):
    e = expr.strip()
    if re.fullmatch(r'"([^"]|"")*"', e):
        return vb(e[1:-1].replace('""', '"'))
    if e.upper() in ("NULL", "TRUE", "FALSE"):
        return e.capitalize()
    return typed("Date", e[1:-1].strip()) if re.fullmatch(r"#.*#", e) else typed("Double", e)


def read_rows(path):
    """The record and the SQL answers of NAME.rows (tests/scripts/README.md)."""
    record, answers = None, []
    text = "\n".join(line for line in path.read_text(encoding="utf-8").splitlines() if not line.startswith("#"))
    for block in re.split(r"\n\s*\n", text.strip()):
        head, fields, *rows = block.split("\n")
        header = [c.strip().rpartition(" ")[::2] for c in fields.split("|")]
        rows = [[c.strip() for c in row.split("|")] for row in rows]
        if any(len(row) != len(header) for row in rows):
            raise Skip("%s: a row of another width than its fields" % path.name)
        args = "Array(%s), Array(%s), Array(%s)" % (", ".join(vb(n) for n, _ in header), ", ".join(
            '"%s"' % k for _, k in header), ", ".join("Array(%s)" % ", ".join(
                "Null" if c == "NULL" else typed(k, "" if c == '""' else c) for c, (_, k) in zip(row, header))
                for row in rows))
        if head == "record":
            record = args
        else:
            answers.append("  conn.Answer %s, %s" % (vb(head[4:]), args))
    return record, answers


def make_case(name, folder, number):
    outcome = (folder / (name + ".json")).read_text(encoding="utf-8").strip()
    if not outcome:
        raise Skip("a usage error (no outcome)")
    x = json.loads(outcome, parse_float=decimal.Decimal)
    path = folder / (name + ".args")
    lines = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
    args = [a for a in lines if a not in ("", "--trace-sql")] + [""]
    options = dict(zip(args[::2], args[1::2]))
    setup = ["  e.SetSysVar %s, %s" % (vb(a.partition("=")[0].strip()), preset(a.partition("=")[2]))
             for o, a in zip(args[::2], args[1::2]) if o == "--set"]
    answers = [vb(a) for o, a in zip(args[::2], args[1::2]) if o == "--answer"]
    if set(options) - {"--set", "--answer", "--db", "--record", ""} or options.get("--db", "@DB@") != "@DB@":
        raise Skip("options %s are the command's own" % " ".join(options))
    if "--db" in options and not (folder / (name + ".rows")).exists():
        raise Skip("no %s.rows with the prepared answers" % name)
    if "--db" in options:
        rows, sql = read_rows(folder / (name + ".rows"))
        setup = ["  Set conn = New StandInConnection"] + sql + ["  Set e.Parent = conn", "  Set e.ObjectFactory = conn"] + setup
        if "--record" in options:
            setup = ["  Set rs = NewRecordSet(%s)" % rows, "  Set e.RecordSet = rs"] + setup
    elif "--record" in options:
        raise Skip("--record without --db")
    script = (folder / (name + ".bas")).read_bytes().removeprefix(b"\xef\xbb\xbf").decode("utf-8")

    p = '"%s ' % name
    out = ["Sub Case%d()" % number, "  Dim e, ui, conn, rs", '  Say "case %s"' % name,
           '  Set e = CreateObject("Morlan.BasicEngine")',
           "  Set ui = NewUserInterface(Array(%s))" % ", ".join(answers), "  Set e.UserInterface = ui"]
    out += setup + ["  e.CodeBlock = " + vb(script), "  e.Execute"]
    for key, member in (("errNum", "ErrNum"), ("currentLine", "CurrentLineNum"), ("lineCount", "LineCount"),
                        ("ifCount", "IfCount"), ("doCount", "DoCount"), ("flagCount", "StmtFlagCount")):
        out.append('  Num %s%s", e.%s, %d' % (p, key, member, x[key]))
    out.append('  Expect %serrMsg", e.ErrMsg, %s' % (p, vb(x["errMsg"])))
    for var, v in x["variables"].items():
        out.append('  Expect %svariable " & %s, Array(e.IsVarDefined(%s), e.GetVarValue(%s)), List(Array(True, %s))'
                   % (p, vb(var), vb(var), vb(var), expected(v)))
    lists = [("messages", "ui.Messages.Items", [vb(m) for m in x["messages"]]),
             ("fields", "rs.Written.Keys", [vb(f) for f in x.get("fields", {})]),
             ("fields", "rs.Written.Items", [expected(v) for v in x.get("fields", {}).values()]),
             ("sql", "conn.Received.Items", [vb(s) for s in x.get("sql", [])]),
             ("SQL texts without an answer", "conn.Unexpected.Items", [])]
    keep = {"messages": True, "fields": "fields" in x, "sql": "sql" in x}
    out += ['  Expect %s%s", %s, List(Array(%s))' % (p, what, actual, ", ".join(items))
            for what, actual, items in lists if keep.get(what, "--db" in options)]
    return out + ["End Sub"]


def main():
    folder, base = Path(sys.argv[1]), Path(sys.argv[2])
    calls, procedures, skipped = [], [], []
    for bas in sorted(folder.glob("*.bas")):
        try:
            procedures += make_case(bas.stem, folder, len(calls) + 1)
            calls.append('Case%d: CheckNoError "%s runs"' % (len(calls) + 1, bas.stem))
        except Skip as why:
            print("skip %s: %s" % (bas.stem, why))
            skipped.append(bas.stem)
    lines = ["OpenChecks", "On Error Resume Next"] + calls + ['Say "skipped: %s"' % ", ".join(skipped)]
    lines += ['FinishChecks "shared cases"'] + procedures
    base.with_suffix(".vbs").write_text("\r\n".join(lines) + "\r\n", encoding="ascii")
    strings = "".join("%s\t%s\r\n" % (key, text) for text, key in texts.items())
    base.with_suffix(".strings").write_bytes(b"\xff\xfe" + strings.encode("utf-16-le"))
    print("%d cases taken, %d skipped" % (len(calls), len(skipped)))


main()
