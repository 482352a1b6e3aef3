#!/usr/bin/env python3
"""makeSamples.py FOLDER: fills FOLDER/samples/{tuning,heldout}/ENCODING/ with encoded samples of FOLDER/texts.

Each sample is a pair of files: NAME.data holds the bytes to be detected, NAME.text the same text in UTF-8. There are
samples of 200 bytes, 2 KB and 50 KB, half of them prose, half program code with comments in the language. The choice
is random with a fixed seed: the same texts give the same samples.
"""
import pathlib
import random
import sys
import sysconfig

WEST = "da de es fi fr is it nb nl pt pt_BR sv ca".split()
CENTRAL = "cs hr hu pl ro sk sl".split()
BALTIC = "et lt lv".split()
EVERY = WEST + CENTRAL + BALTIC + "ar be bg el he ja ko mk ru sr th tr uk vi zh_CN zh_TW".split()

# Name, Python's codec, the mark that precedes the text, languages.
ENCODINGS = [
    ("UTF-8", "utf-8", b"", EVERY),
    ("UTF-8 with mark", "utf-8", b"\xef\xbb\xbf", EVERY),
    ("UTF-16 with mark", "utf-16-le", b"\xff\xfe", EVERY),
    ("UTF-16LE", "utf-16-le", b"", EVERY),
    ("UTF-16BE", "utf-16-be", b"", EVERY),
    ("UTF-32 with mark", "utf-32-le", b"\xff\xfe\0\0", EVERY),
    ("Shift_JIS", "shift_jis", b"", ["ja"]),
    ("EUC-JP", "euc_jp", b"", ["ja"]),
    ("ISO-2022-JP", "iso2022_jp", b"", ["ja"]),
    ("GB18030", "gb18030", b"", ["zh_CN"]),
    ("Big5", "big5", b"", ["zh_TW"]),
    ("EUC-KR", "cp949", b"", ["ko"]),
    ("windows-1250", "cp1250", b"", CENTRAL),
    ("windows-1251", "cp1251", b"", ["be", "bg", "mk", "ru", "sr", "uk"]),
    ("windows-1252", "cp1252", b"", WEST),
    ("windows-1253", "cp1253", b"", ["el"]),
    ("windows-1254", "cp1254", b"", ["tr"]),
    ("windows-1255", "cp1255", b"", ["he"]),
    ("windows-1256", "cp1256", b"", ["ar"]),
    ("windows-1257", "cp1257", b"", BALTIC),
    ("windows-874", "cp874", b"", ["th"]),
    ("ISO-8859-1", "iso8859-1", b"", WEST),
    ("ISO-8859-2", "iso8859-2", b"", CENTRAL),
    ("ISO-8859-5", "iso8859-5", b"", ["bg", "mk", "ru", "sr"]),
    ("ISO-8859-6", "iso8859-6", b"", ["ar"]),
    ("ISO-8859-7", "iso8859-7", b"", ["el"]),
    ("ISO-8859-8", "iso8859-8", b"", ["he"]),
    ("ISO-8859-9", "iso8859-9", b"", ["tr"]),
    ("ISO-8859-13", "iso8859-13", b"", BALTIC),
    ("ISO-8859-15", "iso8859-15", b"", WEST),
    ("KOI8-R", "koi8-r", b"", ["ru"]),
    ("KOI8-U", "koi8-u", b"", ["uk"]),
    ("macintosh", "mac-roman", b"", WEST),
    ("IBM850", "cp850", b"", WEST),
    ("IBM852", "cp852", b"", CENTRAL),
    ("IBM866", "cp866", b"", ["ru"]),
]
SIZES = {"200": 200, "2K": 2048, "50K": 51200}
SAMPLES_OF_A_KIND = 24

# Where encodings lack a typographic sign, people write the plain one.
PLAIN = str.maketrans({"\u2018": "'", "\u2019": "'", "\u201c": '"', "\u201d": '"', "\u201e": '"', "\u2013": "-",
                       "\u2014": "-", "\u2026": "...", "\u2022": "*", "\u00a0": " ", "\u2010": "-", "\u2011": "-",
                       "\u2212": "-", "\u021b": "\u0163", "\u0219": "\u015f", "\u021a": "\u0162", "\u0218": "\u015e"})
# Signs whose place in the East Asian sets differs between vendors: nobody's detection is at fault there.
DISPUTED = set("\u301c\uff5e\u2016\u2225\u2212\uff0d\u00a2\u00a3\u00a5\u00ac\u2014\u2015\u00b7\u30fb\u203e\u20ac\u2027\u2022\uffe5\uffe3\u22ef\uff0f\u2215")


def encodable(line, codec):
    for candidate in (line, line.translate(PLAIN)):
        try:
            candidate.encode(codec)
            return candidate
        except UnicodeEncodeError:
            pass
    return None


def encodableLines(lines, codec, language):
    for line in lines:
        if language in ("ja", "ko", "zh_CN", "zh_TW") and DISPUTED & set(line):
            continue
        if not all(character == "\t" or character >= " " for character in line):
            continue
        line = encodable(line, codec)
        if line is not None:
            yield line


def codeLines():
    folder = pathlib.Path(sysconfig.get_paths()["stdlib"])
    lines = []
    for path in sorted(folder.glob("*.py"))[:80]:
        lines += [line for line in path.read_text("utf-8").splitlines() if line.isascii() and line.strip()]
    return lines


def prose(lines, randomness):
    yield from lines


def codeWithComments(code):
    def lines(comments, randomness):
        position = randomness.randrange(len(code))
        for comment in comments:
            indent = " " * randomness.choice([0, 4, 8])
            yield indent + randomness.choice(["# ", "# ", "# ", "// "]) + comment[:72]
            for _ in range(randomness.randrange(1, 7)):
                yield code[position % len(code)]
                position += 1
    return lines


def sampleText(documents, codec, language, layout, size, randomness):
    """Lines of documents, beginning at a random line of a random one, cut to the size in encoded bytes."""
    text, length = "", 0
    for document in randomness.sample(documents, len(documents)):
        start = randomness.randrange(max(1, len(document) * 2 // 3)) if not text else 0
        for line in layout(encodableLines(document[start:], codec, language), randomness):
            text += line + "\n"
            length += len((line + "\n").encode(codec))
            if length >= size:
                break
        if length >= size:
            break
    while text and len(text.encode(codec)) > size:
        text = text[:-max(1, (len(text.encode(codec)) - size) // 4)]
    return text


def writeSamples(folder, half, name, codec, mark, documents, code):
    randomness = random.Random(f"{half} {name}")
    target = folder / "samples" / half / name
    target.mkdir(parents=True, exist_ok=True)
    languages = [language for language in dict(ENCODING_LANGUAGES)[name] if documents.get(language)]
    for sizeName, size in SIZES.items():
        for kind, layout in (("prose", prose), ("code", codeWithComments(code))):
            for number in range(SAMPLES_OF_A_KIND):
                language = languages[(number + (7 if kind == "code" else 0)) % len(languages)]
                text = ""
                for _ in range(100):
                    if text and (not text.isascii() or codec.startswith("utf")):
                        break
                    text = sampleText(documents[language], codec, language, layout, size, randomness)
                stem = f"{sizeName}-{kind}-{language}-{number}"
                (target / f"{stem}.data").write_bytes(mark + text.encode(codec))
                (target / f"{stem}.text").write_bytes(text.encode("utf-8"))


ENCODING_LANGUAGES = [(name, languages) for name, _, _, languages in ENCODINGS]


def main():
    folder = pathlib.Path(sys.argv[1])
    code = codeLines()
    for half in ("tuning", "heldout"):
        documents = {}
        for path in sorted((folder / "texts" / half).glob("*/*.txt")):
            documents.setdefault(path.parent.name, []).append(path.read_text("utf-8").split("\n"))
        for name, codec, mark, _ in ENCODINGS:
            writeSamples(folder, half, name, codec, mark, documents, code)


main()
