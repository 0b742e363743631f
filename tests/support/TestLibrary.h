#pragma once

#include "SnippetStore.h"
#include "TemporarySettings.h"

#include <optional>

// A store over a settings file of its own, for one test.
struct TestLibrary {
    TemporarySettings settings;
    SnippetStore store{settings.path()};

    void add(const QString& command, const QString& content,
             Snippet::Trigger trigger = Snippet::Trigger::Immediately) {
        store.appendSnippet(Snippet::create(command, content, Category::defaultCategoryId, trigger));
    }
};

// What the store answered, as text a failure can show.
inline QString said(const std::optional<DataError>& error) {
    return error ? QStringLiteral("refused %1: %2").arg(int(error->kind())).arg(error->why())
                 : QStringLiteral("accepted");
}
