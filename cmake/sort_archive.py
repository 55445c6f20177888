"""Rewrites ZIP archives in the order of the names, with fixed permissions and dates: the same files give the same bytes."""
import sys
import zipfile

for path in sys.argv[1:]:
    with zipfile.ZipFile(path) as archive:
        entries = sorted((entry.filename, archive.read(entry)) for entry in archive.infolist() if not entry.is_dir())
    with zipfile.ZipFile(path, "w") as archive:
        for name, content in entries:
            entry = zipfile.ZipInfo(name)
            entry.external_attr = 0o100644 << 16
            entry.create_system = 3
            archive.writestr(entry, content, zipfile.ZIP_DEFLATED)
