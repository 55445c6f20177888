"""Writes the documents of the packages with links that lead somewhere in them, and a README of parts of README.md and docs/package.md.

    package_documents.py FOLDER VERSION"""
import os, re, sys
from pathlib import Path

ROOT, FOLDER = Path(__file__).resolve().parents[1], Path(sys.argv[1])
# Where the packages have what the tree has; a link to anything else becomes plain text, and a row of a table about it is left out.
PLACES = {"docs/": "share/doc/KELUtils/", "CHANGELOG.md": "share/doc/KELUtils/CHANGELOG.md", "README.md": "README.md", "include/": "include/",
          "samples": "share/KELUtils/samples", "LICENSE": "share/licenses/KELUtils/LICENSE"}

def with_links(text, source, target):
    def link(match):
        words, path, heading = match.groups()
        linked = os.path.normpath(os.path.join(os.path.dirname(source), path)) if path else source
        for old, new in PLACES.items():
            if linked.startswith(old):
                place = os.path.relpath(new + linked[len(old):], os.path.dirname(target))
                return "[%s](%s%s)" % (words.removeprefix("docs/"), place if path else "", heading or "")
        return match.group() if not path else words + "\0"
    text = re.sub(r"\[([^\]\n]*)\]\(([^)#:]*)(#[^)]*)?\)", link, text)
    return re.sub(r"^\| [^|\n]*\0.*\n", "", text, flags=re.M).replace("\0", "")

def section(source, heading):
    text = (ROOT / source).read_text()
    return with_links(re.search(r"^#+ %s\n.*?(?=^##? |\Z)" % heading, text, re.M | re.S).group(), source, "README.md")

def write(target, text):
    (FOLDER / target).parent.mkdir(parents=True, exist_ok=True)
    (FOLDER / target).write_text(text)

for source in ["devkit/README.md", *("docs/" + path.name for path in (ROOT / "docs").glob("*.md"))]:
    target = source.replace("docs/", PLACES["docs/"])
    write(target, with_links((ROOT / source).read_text(), source, target))
write("README.md", section("README.md", "KELUtils").replace("\n", " %s\n" % sys.argv[2], 1) + "".join(
    section("docs/package.md", name) for name in ("Contents of the package", "The product tree")) + "".join(
    section("README.md", name) for name in ("The exports", "A first program", "Documents")))
