"""Writes the documents of the package: those of docs/ with links that lead somewhere in the package, and a README of its own from
parts of README.md and docs/package.md.

    package_documents.py FOLDER VERSION"""
import os, re, sys
from pathlib import Path

ROOT, FOLDER, DOCUMENTS = Path(__file__).resolve().parents[1], Path(sys.argv[1]), "share/doc/KELUtils/"
# Where the package has what the tree has; a link to anything else becomes plain text.
PLACES = (("docs/", DOCUMENTS), ("CHANGELOG.md", DOCUMENTS + "CHANGELOG.md"), ("README.md", "README.md"), ("include/", "include/"),
          ("samples", "share/KELUtils/samples"), ("LICENSE", "share/licenses/KELUtils/LICENSE"))

def with_links(text, source, target):
    def link(match):
        words, path, heading = match.groups()
        linked = os.path.normpath(os.path.join(os.path.dirname(source), path)) if path else source
        found = [new + linked[len(old):] for old, new in PLACES if linked.startswith(old)]
        if not found:
            return words + "\0"
        path = os.path.relpath(found[0], os.path.dirname(target)) if found[0] != target else ""
        return "[%s](%s%s)" % (words.removeprefix("docs/"), path, heading or "")
    text = re.sub(r"\[([^\]\n]*)\]\(([^)#:]*)(#[^)]*)?\)", link, text)
    return re.sub(r"^\| [^|\n]*\0.*\n", "", text, flags=re.M).replace("\0", "")  # without rows about what the package lacks

def section(source, heading, level="##"):
    """A section, with the links of the package's README."""
    text = re.search(r"^#+ %s\n.*?(?=^##? |\Z)" % re.escape(heading), (ROOT / source).read_text(), re.M | re.S).group()
    return with_links(level + text[text.index(" "):], source, "README.md")

def write(name, text):
    (FOLDER / name).parent.mkdir(parents=True, exist_ok=True)
    (FOLDER / name).write_text(text)

for document in sorted((ROOT / "docs").glob("*.md")):
    write(DOCUMENTS + document.name, with_links(document.read_text(), "docs/" + document.name, DOCUMENTS + document.name))
parts = [section("README.md", "KELUtils", "#").replace("# KELUtils\n", "# KELUtils %s\n" % sys.argv[2], 1)]
parts += [section("docs/package.md", name) for name in ("Contents of the package", "The product tree")]
parts += [section("README.md", name) for name in ("The exports", "A first program", "Documents")]
write("README.md", "".join(parts))
