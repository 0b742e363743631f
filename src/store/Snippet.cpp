#include "Snippet.h"

#include "Timestamp.h"

#include <QHash>

Snippet::Snippet(QUuid id, QString command, QString content, double createdAt, QUuid categoryId)
    : id(id), command(std::move(command)), content(std::move(content)), createdAt(createdAt),
      categoryId(categoryId) {}

Snippet Snippet::create(QString command, QString content, QUuid categoryId, Trigger trigger) {
    Snippet snippet(QUuid::createUuid(), std::move(command), std::move(content), Timestamp::now(),
                    categoryId);
    snippet.trigger = trigger;
    return snippet;
}

bool Snippet::endsWord(QStringView character) {
    if (character == u"\t" || character == u"\r" || character == u"\n")
        return true;
    const auto codePoints = character.toUcs4();
    return codePoints.size() == 1 &&
           (QChar::isPunct(codePoints.front()) ||
            QChar::category(codePoints.front()) == QChar::Separator_Space);
}

size_t qHash(const Snippet& snippet, size_t seed) noexcept { return qHash(snippet.id, seed); }
