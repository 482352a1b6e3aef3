#!/usr/bin/env python3
"""makeLanguageFrequencies.py FOLDER: writes platform/linux/text/LanguageFrequencies.cpp from FOLDER/texts/tuning.

For every language the table holds its characters beyond ASCII and the commonest pairs of neighbouring characters of
which at least one is beyond ASCII, ordered into classes of equal rarity, in bits; for languages in Latin script also
the commonest pairs in ASCII. Letters are small; whatever is ASCII and no letter counts as a space. East Asian languages
have characters only: pairs would be too many and are not needed.
"""
import collections
import math
import pathlib
import sys
import unicodedata

EAST_ASIAN = {"ja": 900, "ko": 900, "zh_CN": 1100, "zh_TW": 1100}
PAIRS = {"th": 420, "vi": 200, "el": 300, "he": 240, "ar": 320, "fa": 240, "ru": 340, "uk": 320, "bg": 300, "be": 260,
         "sr": 260, "mk": 260}
PAIRS_OF_LATIN = 130
PLAIN_PAIRS = 160
NOT_LATIN = {*EAST_ASIAN, "th", "el", "he", "ar", "fa", "ru", "uk", "bg", "be", "sr", "mk"}
RAREST = 13  # bits; what is rarer got into the text by accident
ONE_TABLE = {"pt_BR": "pt", "nb": "no"}


def folded(character):
    if character.isascii():
        return character.lower() if character.isalpha() else " "
    small = character.lower()
    return small if len(small) == 1 else character


def isTelling(character):
    return not character.isascii() and ord(character) < 0x10000 and unicodedata.category(character) != "Cf"


def counted(paths):
    letters, pairs, plainPairs = collections.Counter(), collections.Counter(), collections.Counter()
    for path in paths:
        for line in path.read_text("utf-8").split("\n"):
            text = [" ", *map(folded, line), " "]
            for pair in zip(text, text[1:]):
                if any(map(isTelling, pair)):
                    pairs[pair] += 1
                elif pair != (" ", " ") and "".join(pair).isascii():
                    plainPairs[pair] += 1
            letters.update(character for character in text if isTelling(character))
    return letters, pairs, plainPairs


def classes(counts, limit):
    """The commonest entries by rarity in whole bits, each class in code point order."""
    total = sum(counts.values())
    byRarity = collections.defaultdict(list)
    for entry, count in counts.most_common(limit):
        bits = max(1, round(math.log2(total / count)))
        if count > 2 and bits <= RAREST:
            byRarity[bits].append("".join(entry))
    return sorted((bits, sorted(entries)) for bits, entries in byRarity.items())


def visible(entry):
    """Signs that an editor would not show, or would act upon, are spelled out."""
    return "".join(character if character == " " or unicodedata.category(character)[0] in "LNPS"
                   else f"\\u{ord(character):04X}" for character in entry)


def literal(bits, entries):
    """One class per element; long classes go on over several literals of readable length."""
    lines, line = [], ""
    for entry in map(visible, entries):
        if len(line) + len(entry) > 84:
            lines.append(line)
            line = ""
        line += entry
    lines.append(line)
    return f"    {{{bits}, " + "\n     ".join(f'u"{line}"' for line in lines) + "},\n"


def table(name, counts, limit):
    return f"constexpr Frequency {name}[] = {{\n" + "".join(literal(*entry) for entry in classes(counts, limit)) + "};\n"


def main():
    texts = pathlib.Path(sys.argv[1]) / "texts" / "tuning"
    languages = collections.defaultdict(list)
    for folder in sorted(texts.iterdir()):
        languages[ONE_TABLE.get(folder.name, folder.name)] += sorted(folder.glob("*.txt"))
    parts, rows = [], []
    for language, paths in sorted(languages.items()):
        letters, pairs, plainPairs = counted(paths)
        identifier = language.replace("_", "")
        eastAsian = language in EAST_ASIAN
        parts.append(table(f"{identifier}Letters", letters, EAST_ASIAN.get(language, 90 if language == "vi" else 80)))
        if not eastAsian:
            parts.append(table(f"{identifier}Pairs", pairs, PAIRS.get(language, PAIRS_OF_LATIN)))
        if language not in NOT_LATIN:
            parts.append(table(f"{identifier}PlainPairs", plainPairs, PLAIN_PAIRS))
        rows.append(f'    {{"{language}", {identifier}Letters, {"{}" if eastAsian else identifier + "Pairs"}, '
                    f'{"{}" if language in NOT_LATIN else identifier + "PlainPairs"}}},\n')
    target = pathlib.Path(__file__).resolve().parents[2] / "platform/linux/text/LanguageFrequencies.cpp"
    target.write_text(
        "// Written by benchmarks/detection/makeLanguageFrequencies.py: change that script, not this table.\n"
        "// clang-format off\n"
        '#include "platform/linux/text/LanguageFrequencies.h"\n\nnamespace {\n\n' + "\n".join(parts) +
        "\nconstexpr LanguageFrequencies languages[] = {\n" + "".join(rows) + "};\n\n} // namespace\n\n"
        "std::span<const LanguageFrequencies> languageFrequencies() { return languages; }\n", encoding="utf-8")


main()
