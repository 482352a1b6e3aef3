#!/usr/bin/env python3
"""collectTexts.py FOLDER: fills FOLDER/texts/{tuning,heldout}/LANGUAGE/ with UTF-8 texts in many languages.

The texts come from Debian packages (manual pages, message catalogues, fortune cookies), which are downloaded and
unpacked below FOLDER, not installed. A document goes to one half or the other by its name alone, so a manual page and
all its translations are on the same side and nothing that was used for tuning is ever measured.
"""
import bz2
import gettext
import gzip
import pathlib
import re
import subprocess
import sys
import zlib

MANUALS = ["", "cs", "da", "de", "el", "es", "fi", "fr", "hu", "id", "it", "ja", "mk", "nb", "nl", "pl", "pt-br", "ro",
           "ru", "sr", "sv", "tr", "uk", "vi", "zh"]
CATALOGUES = ["abiword-common", "apt", "audacity-data", "bluefish-data", "dpkg", "evolution-common", "geany-common",
              "gimp-data", "gnome-control-center-data", "gnucash-common", "gnumeric-common", "libglib2.0-data",
              "libgtk-3-common", "nautilus-data", "pidgin-data", "rhythmbox-data", "transmission-common", "vlc-l10n"]
FORTUNES = ["bg", "br", "cs", "de", "es", "ga", "it", "pl", "ru", "zh"]
PACKAGES = ([f"manpages-{name}".removesuffix("-") for name in MANUALS] + CATALOGUES + [f"fortunes-{name}" for name in FORTUNES])

# The languages that the single-byte and East Asian encodings were made for, by the names of their locale folders.
LANGUAGES = {"ar", "be", "bg", "ca", "cs", "da", "de", "el", "en", "es", "et", "fa", "fi", "fr", "he", "hr", "hu", "is", "it",
             "ja", "ko", "lt", "lv", "mk", "nb", "nl", "pl", "pt", "pt_BR", "ro", "ru", "sk", "sl", "sr", "sv", "th",
             "tr", "uk", "vi", "zh_CN", "zh_TW"}
# Pages that list the whole repertoire of an encoding, line by line, are tables and not texts in a language.
CODE_TABLES = re.compile(r"(iso[_-]8859|koi8|cp125|armscii|latin|charsets|ascii)", re.IGNORECASE)

FORTUNE_LANGUAGES = {"br": "pt_BR", "zh": "zh_CN"}


def download(folder):
    folder.mkdir(parents=True, exist_ok=True)
    missing = [name for name in PACKAGES if not list(folder.glob(f"{name}_*.deb"))]
    if missing:
        subprocess.run(["apt-get", "-qq", "download", *missing], cwd=folder, check=True)
    for package in sorted(folder.glob("*.deb")):
        target = folder / package.name.split("_")[0]
        if not target.exists():
            subprocess.run(["dpkg-deb", "-x", str(package), str(target)], check=True)


def unpacked(path):
    data = path.read_bytes()
    if path.suffix == ".gz":
        return gzip.decompress(data)
    return bz2.decompress(data) if path.suffix == ".bz2" else data


def proseOfManual(source):
    """The running text of a page: no requests, no font changes, no escapes."""
    lines = []
    for line in source.splitlines():
        if line.startswith((".", "'", "\\\"")):
            continue
        line = re.sub(r"\\f(\[[^]]*\]|\(..|.)", "", line)
        line = re.sub(r"\\\(co", "\u00a9", line)
        line = re.sub(r"\\[-e ]", lambda match: {"-": "-", "e": "\\", " ": " "}[match.group()[1]], line)
        line = re.sub(r"\\(\((..)|\*?\[[^]]*\]|[&/,:%|^])", "", line)
        if len(line) > 20:
            lines.append(line.rstrip())
    return lines


def manuals(root):
    for path in sorted(root.glob("manpages*/usr/share/man/**/man*/*.gz")):
        language = {"man": "en"}.get(path.parts[-3], path.parts[-3].split(".")[0])
        if path.is_symlink() or language not in LANGUAGES or CODE_TABLES.match(path.name):
            continue
        yield language, path.name.removesuffix(".gz"), proseOfManual(unpacked(path).decode("utf-8", "ignore"))


def catalogues(root):
    for path in sorted(root.glob("*/usr/share/locale/*/LC_MESSAGES/*.mo")):
        language = {"no": "nb", "en_GB": "en"}.get(path.parts[-3], path.parts[-3])
        if language not in LANGUAGES:
            continue
        with path.open("rb") as file:
            messages = gettext.GNUTranslations(file)._catalog
        texts = [text for key, text in messages.items() if key and isinstance(text, str) and text != key]
        yield language, path.name, [line for text in texts for line in text.splitlines() if len(line) > 12]


def fortunes(root):
    for path in sorted(root.glob("fortunes-*/usr/share/games/fortunes/**/*")):
        if not path.is_file() or path.is_symlink() or path.suffix in (".dat", ".u8"):
            continue
        language = path.relative_to(root).parts[0].removeprefix("fortunes-")
        language = FORTUNE_LANGUAGES.get(language, language)
        try:
            text = unpacked(path).decode("utf-8")
        except UnicodeDecodeError:
            continue
        if language in LANGUAGES and "\x1b" not in text:
            yield language, f"fortunes-{path.name}", [line for line in text.splitlines() if len(line) > 12]


def main():
    folder = pathlib.Path(sys.argv[1])
    packages = folder / "packages"
    download(packages)
    for source in (manuals, catalogues, fortunes):
        for language, name, lines in source(packages):
            if len(lines) < 10 or (language != "en" and all(line.isascii() for line in lines)):
                continue
            half = "tuning" if zlib.crc32(name.encode()) % 2 else "heldout"
            target = folder / "texts" / half / language / f"{name}.txt"
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text("\n".join(lines) + "\n", encoding="utf-8")


main()
