// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/NameEditing.h"

#include <QList>
#include <vector>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// One character of a name and the bytes it stands for.
struct Piece {
    char32_t character;
    QByteArray bytes;
};

// The length of the UTF-8 character at `at`, or 0 when the bytes there are not one
// (overlong, a surrogate, past U+10FFFF, or cut off).
int characterLength(const QByteArray& bytes, qsizetype at, char32_t& character) {
    const uchar lead = uchar(bytes[at]);
    int length = 0;
    char32_t least = 0;
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        length = 2, least = 0x80, character = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, least = 0x800, character = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, least = 0x10000, character = lead & 0x07;
    } else {
        return 0;
    }
    if (at + length > bytes.size())
        return 0;
    for (int i = 1; i < length; ++i) {
        const uchar next = uchar(bytes[at + i]);
        if ((next & 0xC0) != 0x80)
            return 0;
        character = (character << 6) | (next & 0x3F);
    }
    if (character < least || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF))
        return 0;
    return length;
}

std::vector<Piece> piecesOf(const QByteArray& name) {
    std::vector<Piece> pieces;
    for (qsizetype at = 0; at < name.size();) {
        char32_t character = 0;
        const int length = characterLength(name, at, character);
        if (length == 0) {
            pieces.push_back({kReplacement, name.mid(at, 1)});
            ++at;
        } else {
            pieces.push_back({character, name.mid(at, length)});
            at += length;
        }
    }
    return pieces;
}

QByteArray utf8Of(char32_t character) {
    return QString::fromUcs4(&character, 1).toUtf8();
}

} // namespace

QString editableName(const QByteArray& name) {
    QString text;
    for (const Piece& piece : piecesOf(name))
        text += QString::fromUcs4(&piece.character, 1);
    return text;
}

QByteArray nameFromEdit(const QByteArray& original, const QString& edited) {
    const std::vector<Piece> before = piecesOf(original);
    const QList<uint> after = edited.toUcs4();
    const size_t n = before.size();
    const size_t m = size_t(after.size());
    // Far too long to be a name anyway: the file system will say so.
    if (m > 4 * 255)
        return edited.toUtf8();
    // The characters left in place are those of a longest common subsequence of the
    // two; a name is short, so the whole table is small.
    std::vector<std::vector<quint16>> common(n + 1, std::vector<quint16>(m + 1, 0));
    for (size_t i = n; i-- > 0;)
        for (size_t j = m; j-- > 0;)
            common[i][j] = before[i].character == after[qsizetype(j)]
                               ? quint16(common[i + 1][j + 1] + 1)
                               : std::max(common[i + 1][j], common[i][j + 1]);
    QByteArray bytes;
    size_t i = 0;
    for (size_t j = 0; j < m;) {
        if (i < n && before[i].character == after[qsizetype(j)]) {
            bytes += before[i++].bytes; // left in place: its own bytes
            ++j;
        } else if (i < n && common[i + 1][j] == common[i][j]) {
            ++i; // a character the edit left out
        } else {
            bytes += utf8Of(after[qsizetype(j++)]);
        }
    }
    return bytes;
}
