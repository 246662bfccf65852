"""A second reader of the workbooks the sheet fuzz test saves.

For every NAME.xlsx in the folder given: every XML part must parse, and the
cells of the first sheet must hold what NAME.expect lists, one cell a line:
REF, a tab, then "n:NUMBER", "s:TEXT", "b:0|1", "e:TEXT" or "-" (no value).
TEXT has line feeds and tabs written "\\n" and "\\t". Prints one line per fault
and "ok N" at the end.
"""
import pathlib
import sys
import xml.etree.ElementTree as ET
import zipfile

MAIN = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"


def text_of(element):
    """The text of a string item or inline string, phonetic runs left out."""
    if element is None:
        return ""
    if element.tag == MAIN + "rPh":
        return ""
    if element.tag == MAIN + "t":
        return element.text or ""
    return "".join(text_of(child) for child in element)


def cells(book):
    shared = []
    if "xl/sharedStrings.xml" in book.namelist():
        root = ET.fromstring(book.read("xl/sharedStrings.xml"))
        shared = [text_of(si) for si in root.iter(MAIN + "si")]
    root = ET.fromstring(book.read("xl/worksheets/sheet1.xml"))
    found = {}
    for row in root.find(MAIN + "sheetData"):
        for c in row.findall(MAIN + "c"):
            kind, v = c.get("t", "n"), c.find(MAIN + "v")
            if kind == "inlineStr":
                found[c.get("r")] = "s:" + text_of(c.find(MAIN + "is"))
            elif v is None:
                found[c.get("r")] = "-"
            elif kind == "s":
                found[c.get("r")] = "s:" + shared[int(v.text)]
            elif kind == "str":
                found[c.get("r")] = "s:" + (v.text or "")
            else:
                found[c.get("r")] = kind + ":" + (v.text or "")
    return found


def same(want, got):
    if want.startswith("n:") and got.startswith("n:"):
        return float(want[2:]) == float(got[2:])
    return want == got


def unescape(text):
    return text.replace("\\n", "\n").replace("\\t", "\t")


def main(folder):
    faults, count = [], 0
    for path in sorted(pathlib.Path(folder).glob("*.xlsx")):
        count += 1
        try:
            with zipfile.ZipFile(path) as book:
                for name in book.namelist():
                    if name.endswith((".xml", ".rels")):
                        ET.fromstring(book.read(name))
                found = cells(book)
        except Exception as error:  # a save no reader can open is the fault sought
            faults.append(f"{path.name}: unreadable: {error}")
            continue
        for line in path.with_suffix(".expect").read_text(encoding="utf-8").splitlines():
            ref, want = line.split("\t", 1)
            want, got = unescape(want), found.get(ref, "-")
            if not same(want, got):
                faults.append(f"{path.name} {ref}: expected {want!r}, read {got!r}")
    print("\n".join(faults + [f"ok {count}"]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
