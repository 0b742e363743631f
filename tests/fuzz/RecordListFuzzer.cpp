// Stored snippet and category lists as the store reads them from a settings file: any bytes at
// all must decode without harm, and whatever decodes must write out and read back unchanged.
#include "RecordCodec.h"
#include "SnippetListEncoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <tuple>

namespace {
void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "broken invariant: %s\n", what);
    std::abort();
}

// Every field, the time bit for bit: records compare equal by id alone.
auto fields(const Snippet& s) {
    return std::tuple(s.id, s.command, s.content, std::bit_cast<quint64>(s.createdAt), s.categoryId);
}
auto fields(const Category& c) {
    return std::tuple(c.id, c.name, std::bit_cast<quint64>(c.createdAt));
}
template <typename T>
bool sameRecords(const QList<T>& a, const QList<T>& b) {
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const T& x, const T& y) { return fields(x) == fields(y); });
}

// Checks one list kind; returns the encoded form of what was kept, if any.
template <typename Decode, typename Encode>
std::optional<QByteArray> check(const QByteArray& json, qsizetype arrayLength,
                                const std::optional<QByteArray>& asQt, Decode decode, Encode encode) {
    int unreadable = 0;
    const auto decoded = decode(json, &unreadable);
    if (!decoded) {
        // Every list Qt's reader took, as earlier versions read files, must still be read.
        require(!asQt, "a document Qt reads as an array is decoded");
        require(unreadable == 0, "no unreadable records counted for a refused document");
        return std::nullopt;
    }
    // The codec may read more than Qt (a time too small for a double is read as 0); where Qt
    // reads the document too, records are read as Qt reads them: the same as from its rewrite.
    if (asQt) {
        require(decoded->size() + unreadable == arrayLength,
                "kept plus unreadable records make the whole array");
        int unreadableAsQt = 0;
        const auto decodedAsQt = decode(*asQt, &unreadableAsQt);
        require(decodedAsQt && unreadable == unreadableAsQt && sameRecords(*decoded, *decodedAsQt),
                "reads a document as Qt's reader does");
    }
    for (const auto& record : *decoded)
        require(RecordCodec::parseUuid(RecordCodec::uuidString(record.id)) == record.id,
                "ids write canonically");
    const auto encoded = encode(*decoded);
    // Only a time JSON cannot write stops a list from being encoded.
    const bool finite = std::all_of(decoded->cbegin(), decoded->cend(),
                                    [](const auto& r) { return std::isfinite(r.createdAt); });
    require(encoded.has_value() == finite, "encoded exactly when times are finite");
    if (!encoded)
        return std::nullopt;
    int unreadableAgain = 0;
    const auto again = decode(*encoded, &unreadableAgain);
    require(again && unreadableAgain == 0, "what was written reads back whole");
    require(sameRecords(*decoded, *again), "what was written reads back field for field");
    require(encode(*again) == encoded, "writing what was read back gives the same bytes");
    return encoded;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    std::optional<QByteArray> asQt;
    qsizetype arrayLength = -1;
    if (error.error == QJsonParseError::NoError && document.isArray()) {
        asQt = document.toJson(QJsonDocument::Compact);
        arrayLength = document.array().size();
    }

    const auto snippets = check(
        json, arrayLength, asQt,
        [](const QByteArray& j, int* u) { return RecordCodec::decodeSnippets(j, u); },
        [](const QList<Snippet>& l) { return RecordCodec::encodeSnippets(l); });
    check(json, arrayLength, asQt,
          [](const QByteArray& j, int* u) { return RecordCodec::decodeCategories(j, u); },
          [](const QList<Category>& l) { return RecordCodec::encodeCategories(l); });

    // Saving reuses each snippet's earlier JSON; fresh and reused, the bytes are the codec's.
    if (snippets) {
        SnippetListEncoder encoder;
        const auto list = *RecordCodec::decodeSnippets(*snippets);
        require(encoder.encode(list) == snippets, "the list encoder writes what the codec writes");
        QList<Snippet> reversed(list.crbegin(), list.crend());
        if (!reversed.isEmpty())
            reversed.first().command += QLatin1Char('x');
        require(encoder.encode(reversed) == RecordCodec::encodeSnippets(reversed),
                "the list encoder's reused JSON stays the codec's after an edit");
    }
    return 0;
}
