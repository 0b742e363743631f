#include "ImportPlan.h"

ImportPlan ImportPlan::failure(QString source, QString error) {
    ImportPlan plan;
    plan.source = std::move(source);
    plan.error = std::move(error);
    return plan;
}

void ImportPlan::addSnippet(const Snippet& snippet) {
    // A blank command would expand on every key.
    if (snippet.command.trimmed().isEmpty()) {
        ++skipped;
        return;
    }
    snippets.append(snippet);
    resolutions.append(Resolution::skip);
}

void ImportPlan::setAllResolutions(Resolution resolution) {
    resolutions.fill(resolution, snippets.size());
}

QString ImportPlan::categoryName(const QUuid& id) const {
    for (const Category& category : categories) {
        if (category.id == id)
            return category.name;
    }
    return {};
}
