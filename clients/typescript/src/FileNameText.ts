// File names are bytes and need not be UTF-8. In a text a byte that is not part of well-formed UTF-8 stands as the
// character U+10F800 + byte, and so does each byte of such a character that a name really holds.

const firstEscape = 0x10f880;
const lastEscape = 0x10f8ff;
const escapeOffset = 0x10f800;

const isEscape = (codePoint: number) => codePoint >= firstEscape && codePoint <= lastEscape;

/** The text of a file name that was read as bytes, in the form that the daemon uses. */
export function textFromFileName(fileName: Uint8Array): string {
    let text = "";
    for (let at = 0; at < fileName.length; ) {
        const piece = wellFormedPiece(fileName, at);
        if (piece && !isEscape(piece.codePoint)) {
            text += String.fromCodePoint(piece.codePoint);
            at += piece.length;
        } else {
            const end = at + (piece?.length ?? 1);
            for (; at < end; ++at) text += String.fromCodePoint(escapeOffset + fileName[at]!);
        }
    }
    return text;
}

/** The bytes of the file name that a text from the daemon stands for. */
export function fileNameFromText(text: string): Uint8Array {
    const pieces: Uint8Array[] = [];
    const encoder = new TextEncoder();
    for (const character of text) {
        const codePoint = character.codePointAt(0)!;
        pieces.push(isEscape(codePoint) ? Uint8Array.of(codePoint - escapeOffset) : encoder.encode(character));
    }
    return Buffer.concat(pieces);
}

/** For people: bytes that are no text become the replacement character. */
export function displayText(text: string): string {
    return text.replace(/[\u{10f880}-\u{10f8ff}]/gu, "\ufffd");
}

const strictDecoder = new TextDecoder("utf-8", { fatal: true, ignoreBOM: true });

function wellFormedPiece(bytes: Uint8Array, at: number): { codePoint: number; length: number } | undefined {
    const first = bytes[at]!;
    const length = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    try {
        const character = strictDecoder.decode(bytes.subarray(at, at + length));
        return { codePoint: character.codePointAt(0)!, length };
    } catch {
        return undefined;
    }
}
