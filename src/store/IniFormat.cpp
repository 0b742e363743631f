#include "IniFormat.h"

#include "LargePages.h"

#include <QStringList>
#include <array>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {
const QString generalSection = QStringLiteral("General");

int hexValue(uchar ch) {
    if (ch >= '0' && ch <= '9')
        return ch - '0';
    if (ch >= 'a' && ch <= 'f')
        return ch - 'a' + 10;
    if (ch >= 'A' && ch <= 'F')
        return ch - 'A' + 10;
    return -1;
}

int octValue(uchar ch) { return ch >= '0' && ch <= '7' ? ch - '0' : -1; }

// The first `c` in [from, to), or `to`.
const char* find(const char* from, const char* to, char c) {
    if (from >= to)
        return to;
    const void* found = std::memchr(from, c, size_t(to - from));
    return found ? static_cast<const char*>(found) : to;
}

char hexDigit(uint value) { return "0123456789abcdef"[value & 0xF]; }
char upperHexDigit(uint value) { return "0123456789ABCDEF"[value & 0xF]; }

void appendUtf8(QByteArray& out, char32_t code) {
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | (code >> 18));
        out += char(0x80 | ((code >> 12) & 0x3F));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

// QSettings' escaping of one text value, written as UTF-8 (byte arrays go through encodeBytes).
// A hex digit right after a \x escape is escaped too, or a reader would take it into the escape.
void appendEscapedString(QByteArray& out, const QString& text) {
    const char16_t* const units = reinterpret_cast<const char16_t*>(text.utf16());
    const qsizetype count = text.size();
    const qsizetype start = out.size();
    bool needsQuotes = false;
    bool escapeNextIfDigit = false;
    for (qsizetype i = 0; i < count; ++i) {
        const uint ch = units[i];
        if (ch == ';' || ch == ',' || ch == '=')
            needsQuotes = true;
        if (escapeNextIfDigit && hexValue(uchar(ch)) >= 0 && ch < 0x80) {
            out += "\\x";
            out += hexDigit(ch >> 4);
            out += hexDigit(ch);
            continue;
        }
        escapeNextIfDigit = false;
        switch (ch) {
        case '\0': out += "\\0"; escapeNextIfDigit = true; break;
        case '\a': out += "\\a"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\v': out += "\\v"; break;
        case '"':
        case '\\':
            out += '\\';
            out += char(ch);
            break;
        default:
            if (ch <= 0x1F) {
                out += "\\x";
                if (ch >= 0x10)
                    out += QByteArray::number(ch, 16);
                else
                    out += hexDigit(ch);
                escapeNextIfDigit = true;
            } else if (ch < 0x80) {
                out += char(ch);
            } else if (QChar::isHighSurrogate(ch) && i + 1 < count &&
                       QChar::isLowSurrogate(uint(units[i + 1]))) {
                appendUtf8(out, QChar::surrogateToUcs4(char16_t(ch), char16_t(units[i + 1])));
                ++i;
            } else {
                appendUtf8(out, QChar::isSurrogate(ch) ? char32_t(0xFFFD) : char32_t(ch));
            }
        }
    }
    if (needsQuotes ||
        (start < out.size() && (out.at(start) == ' ' || out.at(out.size() - 1) == ' '))) {
        out.insert(start, '"');
        out += '"';
    }
}

// The same escaping as appendEscapedString for a byte array, written straight into a buffer: a
// library's JSON is most of the file, and this is most of a save.
QByteArray encodeBytes(const QByteArray& bytes) {
    static constexpr QByteArrayView prefix("@ByteArray(");
    const char* const begin = bytes.constData();
    const qsizetype size = bytes.size();
    const char* const stop = begin + size;
    const bool quotes = find(begin, stop, ';') != stop || find(begin, stop, ',') != stop ||
                        find(begin, stop, '=') != stop;
    // At most four bytes ("\\xNN") for one.
    QByteArray out(size * 4 + prefix.size() + 3, Qt::Uninitialized);
    char* dst = out.data();
    if (quotes)
        *dst++ = '"';
    std::memcpy(dst, prefix.data(), size_t(prefix.size()));
    dst += prefix.size();
    bool escapeNextIfDigit = false;
    for (qsizetype i = 0; i < size; ++i) {
        const uchar ch = uchar(begin[i]);
        if (ch >= 0x20 && ch < 0x7F && ch != '"' && ch != '\\' &&
            !(escapeNextIfDigit && hexValue(ch) >= 0)) {
            *dst++ = char(ch);
            escapeNextIfDigit = false;
            continue;
        }
        if (escapeNextIfDigit && hexValue(ch) >= 0) {
            *dst++ = '\\';
            *dst++ = 'x';
            *dst++ = hexDigit(ch >> 4);
            *dst++ = hexDigit(ch);
            continue;
        }
        escapeNextIfDigit = false;
        *dst++ = '\\';
        switch (ch) {
        case '\0': *dst++ = '0'; escapeNextIfDigit = true; break;
        case '\a': *dst++ = 'a'; break;
        case '\b': *dst++ = 'b'; break;
        case '\f': *dst++ = 'f'; break;
        case '\n': *dst++ = 'n'; break;
        case '\r': *dst++ = 'r'; break;
        case '\t': *dst++ = 't'; break;
        case '\v': *dst++ = 'v'; break;
        case '"': case '\\': *dst++ = char(ch); break;
        default:
            *dst++ = 'x';
            if (ch >= 0x10)
                *dst++ = hexDigit(ch >> 4);
            *dst++ = hexDigit(ch);
            escapeNextIfDigit = true;
        }
    }
    *dst++ = ')';
    if (quotes)
        *dst++ = '"';
    out.truncate(dst - out.constData());
    out.squeeze();
    return out;
}

QString variantText(const QVariant& value) {
    QString text = value.toString();
    if (text.contains(QChar::Null))
        return QStringLiteral("@String(") + text + u')';
    if (text.startsWith(u'@'))
        text.prepend(u'@');
    return text;
}

void appendEscapedKey(QByteArray& out, QStringView key) {
    for (const QChar qc : key) {
        const uint ch = qc.unicode();
        if (ch == '/') {
            out += '\\';
        } else if ((ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') ||
                   (ch >= '0' && ch <= '9') || ch == '_' || ch == '-' || ch == '.') {
            out += char(ch);
        } else if (ch <= 0xFF) {
            out += '%';
            out += upperHexDigit(ch >> 4);
            out += upperHexDigit(ch);
        } else {
            out += "%U";
            for (int shift = 12; shift >= 0; shift -= 4)
                out += upperHexDigit(ch >> shift);
        }
    }
}

QString unescapedKey(QByteArrayView key) {
    QString result;
    for (qsizetype i = 0; i < key.size(); ++i) {
        const uchar ch = uchar(key[i]);
        if (ch == '\\') {
            result += u'/';
        } else if (ch == '%' && i + 2 < key.size() + 0 && hexValue(uchar(key[i + 1])) >= 0 &&
                   hexValue(uchar(key[i + 2])) >= 0) {
            result += QChar(char16_t(hexValue(uchar(key[i + 1])) * 16 + hexValue(uchar(key[i + 2]))));
            i += 2;
        } else if (ch == '%' && i + 5 < key.size() + 0 && key[i + 1] == 'U') {
            uint code = 0;
            bool ok = true;
            for (int j = 2; j < 6; ++j) {
                const int digit = hexValue(uchar(key[i + j]));
                ok = ok && digit >= 0;
                code = code * 16 + uint(std::max(digit, 0));
            }
            if (!ok) {
                result += u'%';
                continue;
            }
            result += QChar(char16_t(code));
            i += 5;
        } else {
            result += QChar(char16_t(ch));
        }
    }
    return result;
}

// QSettings' reading of an escaped value: quotes group, commas outside quotes make a list,
// escapes as C's, \x and octal escapes give the code point, unquoted trailing blanks go.
// Returns whether the value is a list (then in `list`, else in `text`).
bool unescape(QByteArrayView raw, QString& text, QStringList& list) {
    constexpr char escapes[][2] = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'},
                                   {'r', '\r'}, {'t', '\t'}, {'v', '\v'}, {'"', '"'},
                                   {'?', '?'},  {'\'', '\''}, {'\\', '\\'}};
    bool isList = false;
    bool inQuotes = false;
    bool quoted = false;
    qsizetype i = 0;
    const qsizetype size = raw.size();
    const auto skipBlanks = [&] {
        while (i < size && (raw[i] == ' ' || raw[i] == '\t'))
            ++i;
    };
    const auto chopTrailingBlanks = [&](qsizetype limit) {
        qsizetype end = text.size();
        while (end > limit && (text.at(end - 1) == u' ' || text.at(end - 1) == u'\t'))
            --end;
        text.truncate(end);
    };
    skipBlanks();
    qsizetype chopLimit = 0;
    while (i < size) {
        const char ch = raw[i];
        if (ch == '\\') {
            ++i;
            if (i >= size)
                break;
            const char next = raw[i++];
            bool known = false;
            for (const auto& escape : escapes) {
                if (next == escape[0]) {
                    text += QLatin1Char(escape[1]);
                    known = true;
                    break;
                }
            }
            if (!known) {
                if (next == 'x' || octValue(uchar(next)) >= 0) {
                    const bool hex = next == 'x';
                    char32_t code = hex ? 0 : char32_t(octValue(uchar(next)));
                    if (hex && (i >= size || hexValue(uchar(raw[i])) < 0)) {
                        chopLimit = text.size();
                        continue; // "\x" with no digit: nothing
                    }
                    while (i < size) {
                        const int digit = hex ? hexValue(uchar(raw[i])) : octValue(uchar(raw[i]));
                        if (digit < 0)
                            break;
                        code = code * (hex ? 16 : 8) + char32_t(digit);
                        ++i;
                    }
                    text += QChar(char16_t(code));
                } else if (next == '\n' || next == '\r') {
                    if (i < size && (raw[i] == '\n' || raw[i] == '\r') && raw[i] != next)
                        ++i;
                }
            }
            chopLimit = text.size();
        } else if (ch == '"') {
            ++i;
            quoted = true;
            inQuotes = !inQuotes;
            if (!inQuotes) {
                skipBlanks();
                chopLimit = text.size();
            }
        } else if (ch == ',' && !inQuotes) {
            if (!quoted)
                chopTrailingBlanks(chopLimit);
            isList = true;
            list.append(text);
            text.clear();
            quoted = false;
            ++i;
            skipBlanks();
            chopLimit = 0;
        } else {
            qsizetype j = i + 1;
            while (j < size && raw[j] != '\\' && raw[j] != '"' && raw[j] != ',')
                ++j;
            text += QString::fromUtf8(raw.sliced(i, j - i));
            i = j;
        }
    }
    if (!quoted)
        chopTrailingBlanks(chopLimit);
    if (isList)
        list.append(text);
    return isList;
}

// The common case of a large value, a byte array of JSON, decoded straight into bytes. Gives up
// (nullopt) on anything the general reading must settle: a list, a literal byte from 0x80 up,
// an escape beyond one byte, text around the quotes.
std::optional<QByteArray> fastByteArray(QByteArrayView raw) {
    constexpr qsizetype readAheadRoom = 64;
    static constexpr QByteArrayView prefix("@ByteArray(");
    qsizetype begin = 0;
    qsizetype end = raw.size();
    const bool quoted = end >= 2 && raw[0] == '"' && raw[end - 1] == '"';
    if (quoted) {
        ++begin;
        --end;
    }
    if (!raw.sliced(begin, end - begin).startsWith(prefix) || end - begin <= prefix.size() ||
        raw[end - 1] != ')')
        return std::nullopt;
    begin += prefix.size();
    --end;
    const char* in = raw.data() + begin;
    const char* const stop = raw.data() + end;
    // Anything that is not plain ASCII is for the general reading; so is a quote or, outside
    // quotes, a comma (a list). One table look-up per byte: this walks the whole library.
    static constexpr auto stopsAt = [](bool comma) {
        std::array<bool, 256> table{};
        for (int c = 0x80; c < 0x100; ++c)
            table[size_t(c)] = true;
        table['\\'] = table['"'] = true;
        table[','] = comma;
        return table;
    };
    static constexpr std::array<bool, 256> stopsQuoted = stopsAt(false);
    static constexpr std::array<bool, 256> stopsUnquoted = stopsAt(true);
    const std::array<bool, 256>& stops = quoted ? stopsQuoted : stopsUnquoted;
    // Room after the end: the JSON reader parses a value in place when it may read a little
    // past it, instead of copying megabytes into a buffer of its own.
    QByteArray out;
    out.reserve(end - begin + readAheadRoom);
    out.resize(end - begin);
    LargePages::prefer(out.data(), out.size());
    char* dst = out.data();
    while (in < stop) {
#if defined(__SSE2__)
        // Sixteen bytes at a time up to the next one that needs a look of its own. The output
        // never runs ahead of the input, so a whole block always fits where it is stored.
        const __m128i backslash = _mm_set1_epi8('\\');
        const __m128i quote = _mm_set1_epi8('"');
        const __m128i comma = _mm_set1_epi8(quoted ? '\\' : ',');
        while (stop - in >= 16) {
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), block);
            const __m128i marked = _mm_or_si128(
                _mm_or_si128(_mm_cmpeq_epi8(block, backslash), _mm_cmpeq_epi8(block, quote)),
                _mm_cmpeq_epi8(block, comma));
            // The top bit of a byte is set for the marked ones and for those from 0x80 up.
            const int stopAt = _mm_movemask_epi8(_mm_or_si128(marked, block));
            if (stopAt == 0) {
                in += 16;
                dst += 16;
                continue;
            }
            const int run = __builtin_ctz(uint(stopAt));
            in += run;
            dst += run;
            break;
        }
        if (in >= stop)
            break;
#endif
        const uchar c = uchar(*in);
        if (!stops[c]) {
            *dst++ = char(c);
            ++in;
            continue;
        }
        if (c != '\\' || in + 1 >= stop)
            return std::nullopt;
        const char next = in[1];
        in += 2;
        switch (next) {
        case 'a': *dst++ = '\a'; break;
        case 'b': *dst++ = '\b'; break;
        case 'f': *dst++ = '\f'; break;
        case 'n': *dst++ = '\n'; break;
        case 'r': *dst++ = '\r'; break;
        case 't': *dst++ = '\t'; break;
        case 'v': *dst++ = '\v'; break;
        case '"': case '?': case '\'': case '\\': *dst++ = next; break;
        case 'x': {
            uint code = 0;
            int digits = 0;
            while (in < stop && hexValue(uchar(*in)) >= 0) {
                code = code * 16 + uint(hexValue(uchar(*in)));
                ++in;
                if (++digits > 2)
                    return std::nullopt;
            }
            if (digits == 0)
                return std::nullopt;
            *dst++ = char(code);
            break;
        }
        case '0':
            if (in < stop && octValue(uchar(*in)) >= 0)
                return std::nullopt;
            *dst++ = '\0';
            break;
        default:
            return std::nullopt;
        }
    }
    out.truncate(dst - out.constData());
    return out;
}

QVariant fromText(const QString& text) {
    if (!text.startsWith(u'@'))
        return text;
    if (text.startsWith(QLatin1String("@@")))
        return text.mid(1);
    if (text.startsWith(QLatin1String("@ByteArray(")) && text.endsWith(u')'))
        return text.mid(11, text.size() - 12).toLatin1();
    if (text.startsWith(QLatin1String("@String(")) && text.endsWith(u')'))
        return text.mid(8, text.size() - 9);
    if (text == QLatin1String("@Invalid()"))
        return QVariant();
    return text;
}
} // namespace

QByteArray IniFormat::encode(const QVariant& value) {
    QByteArray out;
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return QByteArrayLiteral("@Invalid()");
    case QMetaType::QByteArray:
        return encodeBytes(value.toByteArray());
    case QMetaType::QStringList: {
        const QStringList items = value.toStringList();
        if (items.isEmpty())
            return QByteArrayLiteral("@Invalid()");
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (i > 0)
                out += ", ";
            appendEscapedString(out, variantText(items.at(i)));
        }
        return out;
    }
    default:
        appendEscapedString(out, variantText(value));
        return out;
    }
}

QVariant IniFormat::decode(const QByteArray& escaped) {
    // Only a value that starts as a byte array can be one; the rest is short.
    const QByteArrayView view(escaped);
    const qsizetype at = view.indexOf('@');
    if (at >= 0 && at < 4 && view.sliced(at).startsWith("@ByteArray(")) {
        if (auto bytes = fastByteArray(view))
            return *bytes;
    }
    QString text;
    QStringList list;
    if (unescape(view, text, list)) {
        QStringList items;
        items.reserve(list.size());
        for (const QString& item : std::as_const(list))
            items.append(fromText(item).toString());
        return items;
    }
    return fromText(text);
}

IniFormat::Values IniFormat::parse(QByteArray text) {
    Values values;
    // The largest value (the snippet list, most of the file) takes over the text's own buffer
    // instead of being copied out of it: one allocation of the library's size less.
    QString largestKey;
    qsizetype largestStart = 0, largestSize = -1;
    QString section;
    qsizetype i = 0;
    const qsizetype size = text.size();
    while (i < size) {
        // One line; a backslash keeps the character after it (a line break too) in the line.
        while (i < size && (text[i] == '\n' || text[i] == '\r' || text[i] == ' ' || text[i] == '\t'))
            ++i;
        const qsizetype start = i;
        // The line ends at the first line break that no backslash escapes; a value of many
        // megabytes is one line, so the breaks are looked for, not every character.
        const char* const data = text.constData();
        qsizetype end = start;
        while (true) {
            const char* const lf = find(data + end, data + size, '\n');
            const qsizetype lineBreak = find(data + end, lf, '\r') - data;
            qsizetype backslashes = 0;
            while (lineBreak - backslashes - 1 >= start && data[lineBreak - backslashes - 1] == '\\')
                ++backslashes;
            end = lineBreak;
            if (lineBreak >= size || backslashes % 2 == 0)
                break;
            end = lineBreak + 1;
        }
        i = end;
        const char* const equalsAt = find(data + start, data + end, '=');
        const qsizetype equals = equalsAt != data + end ? equalsAt - data : -1;
        const QByteArrayView line = QByteArrayView(text).sliced(start, end - start);
        if (line.isEmpty() || line[0] == ';' || line[0] == '#')
            continue;
        if (line[0] == '[') {
            const qsizetype close = line.lastIndexOf(']');
            if (close > 0) {
                section = unescapedKey(line.sliced(1, close - 1).trimmed());
                if (section.compare(generalSection, Qt::CaseInsensitive) == 0)
                    section.clear();
                else if (section == QLatin1String("%General"))
                    section = generalSection;
            }
            continue;
        }
        if (equals < 0)
            continue;
        const QString key = unescapedKey(line.first(equals - start).trimmed());
        if (key.isEmpty())
            continue;
        const QByteArrayView value = line.sliced(equals - start + 1).trimmed();
        const QString fullKey = section.isEmpty() ? key : section + u'/' + key;
        if (value.size() > largestSize) {
            if (largestSize >= 0)
                values.insert(largestKey, QByteArray(text.constData() + largestStart, largestSize));
            largestKey = fullKey;
            largestStart = value.data() - text.constData();
            largestSize = value.size();
            values.remove(fullKey);
        } else {
            values.insert(fullKey, value.toByteArray());
        }
    }
    if (largestSize >= 0 && !values.contains(largestKey)) {
        text.truncate(largestStart + largestSize);
        text.remove(0, largestStart);
        values.insert(largestKey, std::move(text));
    }
    return values;
}

QByteArray IniFormat::compose(const Values& values) {
    // Sections in the order QSettings writes them: the keys without one first, as [General].
    QMap<QString, QList<Values::const_iterator>> sections;
    qsizetype size = 0;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const qsizetype slash = it.key().indexOf(u'/');
        sections[slash < 0 ? QString() : it.key().first(slash)].append(it);
        size += it.key().size() + it.value().size() + 2;
    }
    QByteArray out;
    out.reserve(size + 64);
    for (auto section = sections.cbegin(); section != sections.cend(); ++section) {
        if (!out.isEmpty())
            out += '\n';
        out += '[';
        if (section.key().isEmpty())
            out += "General";
        else if (section.key() == generalSection)
            out += "%General";
        else
            appendEscapedKey(out, section.key());
        out += "]\n";
        for (const auto& it : section.value()) {
            const QStringView key = section.key().isEmpty()
                                        ? QStringView(it.key())
                                        : QStringView(it.key()).sliced(section.key().size() + 1);
            appendEscapedKey(out, key);
            out += '=';
            out += it.value();
            out += '\n';
        }
    }
    return out;
}
