#!/usr/bin/env python3
"""usage: pages.py [--check] PROGRAM...

Writes anew what the pages take from elsewhere. PROGRAM is a program that the sessions on the pages run. With --check no
page is written: what is out of date is printed, and the exit code is 1. Links that lead nowhere, code that comes from
no file and pages to which README.md has no link are errors in both cases.

    <!-- examples/request.cpp -->          above a block: the block is the file
    <!-- examples/request.cpp: answer -->  above a block: the block is the function of that name in the file
    <!-- tests/names.csv: name, `version` -->
                                           above a table: its cells are those of the file, by these columns; its rows
                                           are the ones whose first cells the table has; quotes make a cell code
    ```console                             a session: each command, behind "$ ", is followed by what it prints

Sessions run in a copy of the data files of examples/, with data/proj as their PROJ directory.
"""

import csv
import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LANGUAGES = {".cpp": "cpp", ".xml": "xml", ".sh": "sh"}
BLOCK = re.compile(r"^<!-- ([^\s:]+)(?:: (\w+))? -->\n```\w+\n.*?^```\n", re.M | re.S)
TABLE = re.compile(r"^<!-- ([^\s:]+\.csv): (.+) -->\n((?:\|.*\n)+)", re.M)
SESSION = re.compile(r"^```console\n(.*?)^```\n", re.M | re.S)
# The time that a run takes is never the same.
SPEED = re.compile(r"[0-9.]+ s, [0-9,]+ lines/s$", re.M)


def function_in(source, name):
    lines = source.split("\n")
    for first, line in enumerate(lines):
        if re.match(rf"\w.*\b{name}\(.*{{$", line):
            last = lines.index("}", first)
            while lines[first - 1].startswith("//"):
                first -= 1
            return "\n".join(lines[first : last + 1]) + "\n"
    raise LookupError(f"there is no function {name}")


def written_block(match):
    path, name = ROOT / match[1], match[2]
    text = path.read_text(encoding="utf-8")
    language = "cmake" if path.name == "CMakeLists.txt" else LANGUAGES.get(path.suffix, "text")
    comment = match[0].split("\n", 1)[0]
    return f"{comment}\n```{language}\n{function_in(text, name) if name else text}```\n"


def rows_of(path):
    with path.open(encoding="utf-8", newline="") as file:
        lines = [line for line in file if line.strip() and not line.startswith("#")]
    return list(csv.DictReader(lines, restval=""))


def cell(row, column):
    name = column.strip("`")
    text = row[name].replace("|", "\\|")
    return f"`{text}`" if text and name != column else text


def written_table(match):
    columns = match[2].split(", ")
    rows = {cell(row, columns[0]): row for row in rows_of(ROOT / match[1])}
    lines = match[3].splitlines()
    for number, line in enumerate(lines[2:], 2):
        key = line.split("|")[1].strip()
        if key not in rows:
            raise LookupError(f"{match[1]} has no row for {key}")
        lines[number] = "| " + " | ".join(cell(rows[key], column) for column in columns) + " |"
    return match[0].split("\n", 1)[0] + "\n" + re.sub(r" +\|", " |", "\n".join(lines)) + "\n"


class Sessions:
    def __init__(self, folder, programs):
        for path in (ROOT / "examples").iterdir():
            if path.suffix in (".xml", ".csv", ".txt"):
                shutil.copy(path, folder)
        path = os.pathsep.join([str(Path(program).resolve().parent) for program in programs] + [os.environ["PATH"]])
        directory = str(ROOT / "data" / "proj")
        self.folder = folder
        self.environment = dict(os.environ, PATH=path, LC_ALL="C.UTF-8", QUARVELSRV_PROJ4_CONF_DIR=directory)

    def written(self, match):
        commands = [line for line in match[1].split("\n") if line.startswith("$ ")]
        return "```console\n" + "".join(map(self.transcript, commands)) + "```\n"

    def transcript(self, command):
        shell = ["bash", "-c", f"exec 2>&1\n{command[2:]}"]
        run = subprocess.run(shell, cwd=self.folder, env=self.environment, stdout=subprocess.PIPE, check=False)
        printed = SPEED.sub("... s, ... lines/s", run.stdout.decode("utf-8"))
        return f"{command}\n{printed}" + (f"[exit code {run.returncode}]\n" if run.returncode else "")


def faults_of(page, text):
    for target in re.findall(r"\]\(([^)#:]+)", text):
        if not (page.parent / target).exists():
            yield f"{target} is not there"
    for above, language in re.findall(r"^(.*)\n```(\w*)\n(?:(?!```).*\n)*```$", text, re.M):
        if language != "console" and not above.startswith("<!-- "):
            yield f"a block below this line comes from no file: {above}"
    if len(re.findall(r"^<!--", text, re.M)) != len(BLOCK.findall(text)) + len(TABLE.findall(text)):
        yield "a comment has neither a block nor a table below it"
    if page == ROOT / "README.md":
        for other in sorted(ROOT.glob("docs/*.md")):
            if f"](docs/{other.name})" not in text:
                yield f"there is no link to docs/{other.name}"


def rewritten(text, sessions):
    text = TABLE.sub(written_table, BLOCK.sub(written_block, text))
    return SESSION.sub(sessions.written, text)


def update(page, sessions, check):
    """Whether the page was as it should be."""
    old, name = page.read_text(encoding="utf-8"), str(page.relative_to(ROOT))
    try:
        new = rewritten(old, sessions)
    except (LookupError, OSError) as error:
        print(f"{name}: {error}")
        return False
    if not check:
        page.write_text(new, encoding="utf-8")
    elif new != old:
        sys.stdout.writelines(difflib.unified_diff(old.splitlines(True), new.splitlines(True), name, "as it should be"))
    faults = list(faults_of(page, new))
    for fault in faults:
        print(f"{name}: {fault}")
    return not faults and (new == old or not check)


def main(arguments):
    check = arguments[:1] == ["--check"]
    if not arguments[check:] or not all(os.path.isfile(program) for program in arguments[check:]):
        sys.exit(__doc__.partition("\n")[0])
    pages = sorted(ROOT.glob("*.md")) + sorted(ROOT.glob("docs/*.md"))
    with tempfile.TemporaryDirectory() as folder:
        sessions = Sessions(folder, arguments[check:])
        return 0 if all([update(page, sessions, check) for page in pages]) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
