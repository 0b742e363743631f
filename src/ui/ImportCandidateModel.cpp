#include "ImportCandidateModel.h"

#include "SnippetStore.h"

#include <QSet>

namespace {
// The content's first line, cut short: enough to recognise the snippet in a row.
QString startOf(const QString& content) {
    constexpr qsizetype shown = 60;
    const QString line = content.section(QLatin1Char('\n'), 0, 0);
    const bool cut = line.size() > shown || line.size() < content.trimmed().size();
    return line.left(shown) + (cut ? QStringLiteral("\u2026") : QString());
}
} // namespace

ImportCandidateModel::ImportCandidateModel(const SnippetStore& store, ImportPlan plan,
                                           QObject* parent)
    : QAbstractTableModel(parent), m_store(store), m_plan(std::move(plan)) {
    m_plan.resolutions.resize(m_plan.snippets.size(), ImportPlan::Resolution::skip);
    // One pass over the library, not one per candidate.
    QSet<QString> commands;
    for (const Snippet& snippet : m_store.snippets())
        commands.insert(snippet.command);
    m_clashes.reserve(m_plan.snippets.size());
    for (const Snippet& candidate : std::as_const(m_plan.snippets)) {
        const bool clash = commands.contains(candidate.command);
        m_clashes.append(clash);
        m_clashCount += clash ? 1 : 0;
    }
}

QString ImportCandidateModel::resolutionName(ImportPlan::Resolution resolution) {
    switch (resolution) {
    case ImportPlan::Resolution::skip:
        return tr("Skip");
    case ImportPlan::Resolution::keepBoth:
        return tr("Keep Both");
    case ImportPlan::Resolution::replace:
        return tr("Replace");
    }
    return {};
}

void ImportCandidateModel::setAllResolutions(ImportPlan::Resolution resolution) {
    for (qsizetype row = 0; row < m_clashes.size(); ++row) {
        if (m_clashes[row])
            m_plan.resolutions[row] = resolution;
    }
    if (rowCount() > 0)
        emit dataChanged(index(0, clashColumn), index(rowCount() - 1, clashColumn));
}

int ImportCandidateModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_plan.snippets.size());
}

int ImportCandidateModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnTotal;
}

QVariant ImportCandidateModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const int row = index.row();
    const Snippet& candidate = m_plan.snippets[row];
    if (index.column() == clashColumn) {
        if (!m_clashes[row])
            return {};
        if (role == Qt::EditRole)
            return int(m_plan.resolutions[row]);
        return role == Qt::DisplayRole ? resolutionName(m_plan.resolutions[row]) : QVariant();
    }
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case commandColumn:
        return candidate.command;
    case contentColumn:
        return startOf(candidate.content);
    case categoryColumn:
        return categoryName(candidate.categoryId);
    }
    return {};
}

bool ImportCandidateModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::EditRole ||
        index.column() != clashColumn || !m_clashes[index.row()])
        return false;
    bool ok = false;
    const int chosen = value.toInt(&ok);
    if (!ok || chosen < int(ImportPlan::Resolution::skip) ||
        chosen > int(ImportPlan::Resolution::replace))
        return false;
    m_plan.resolutions[index.row()] = ImportPlan::Resolution(chosen);
    emit dataChanged(index, index);
    return true;
}

Qt::ItemFlags ImportCandidateModel::flags(const QModelIndex& index) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return Qt::NoItemFlags;
    if (index.column() == clashColumn && m_clashes[index.row()])
        return Qt::ItemIsEnabled | Qt::ItemIsEditable;
    return Qt::ItemIsEnabled;
}

QVariant ImportCandidateModel::headerData(int section, Qt::Orientation orientation,
                                          int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case commandColumn:
        return tr("Command");
    case contentColumn:
        return tr("Content");
    case categoryColumn:
        return tr("Category");
    case clashColumn:
        return tr("Command Already Exists");
    }
    return {};
}

QString ImportCandidateModel::categoryName(const QUuid& id) const {
    // Categories of the file are matched by name; others only exist in the library already.
    const QString planned = m_plan.categoryName(id);
    if (!planned.isEmpty())
        return planned;
    return m_store.category(id).value_or(SnippetStore::defaultCategory()).name;
}
