#include "PlaceholderBar.h"

#include "CustomTextEditor.h"
#include "PlaceholderText.h"
#include "UiTheme.h"

#include <QClipboard>
#include <QDateTime>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
// A warning quotes at most this much of what the user wrote.
constexpr qsizetype quotedLength = 24;

QString quoted(const QString& written) {
    return UiTheme::oneLine(written, quotedLength);
}

QString warningFor(const PlaceholderText::Issue& issue) {
    using Problem = PlaceholderText::Problem;
    switch (issue.problem) {
    case Problem::UnknownName:
        return PlaceholderBar::tr("%1 is not a placeholder Typolet knows; it is typed as written.")
            .arg(quoted(issue.written));
    case Problem::EmptyBraces:
        return PlaceholderBar::tr("%1 names no placeholder; it is typed as written.")
            .arg(quoted(issue.written));
    case Problem::NotClosed:
        return PlaceholderBar::tr("%1 is not closed with }} on its line; it is typed as written.")
            .arg(quoted(issue.written));
    case Problem::StrayClosing:
        return PlaceholderBar::tr("}} without {{ before it is typed as written (write {{{{ for "
                                  "literal braces).");
    case Problem::Nested:
        return PlaceholderBar::tr("%1: a placeholder cannot hold another; it is typed as written.")
            .arg(quoted(issue.written));
    case Problem::ExtraCursor:
        return PlaceholderBar::tr("Only the first {{cursor}} places the cursor; later ones are "
                                  "typed as written.");
    case Problem::UnnamedField:
        return PlaceholderBar::tr("%1 has no name for its field (write it after the colon); it is "
                                  "typed as written.")
            .arg(quoted(issue.written));
    case Problem::NoChoices:
        return PlaceholderBar::tr("%1 offers nothing to choose (write =a|b|c after its name); it "
                                  "is typed as written.")
            .arg(quoted(issue.written));
    }
    return {};
}
} // namespace

PlaceholderBar::PlaceholderBar(CustomTextEditor* editor, QWidget* parent)
    : QWidget(parent), m_editor(editor) {
    setObjectName(QStringLiteral("placeholderBar"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);

    m_previewRow = new QWidget(this);
    auto* previewLayout = new QHBoxLayout(m_previewRow);
    previewLayout->setContentsMargins(0, 0, 0, 0);
    previewLayout->setSpacing(6);
    QLabel* previewTitle = UiTheme::smallLabel(tr("Types now:"), m_previewRow);
    previewTitle->setWordWrap(false);
    previewLayout->addWidget(previewTitle);
    // One line each, cut at the edge: the room under the content stays the same.
    m_preview = UiTheme::smallLabel(QString(), m_previewRow);
    m_preview->setObjectName(QStringLiteral("placeholderPreview"));
    m_preview->setWordWrap(false);
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    previewLayout->addWidget(m_preview, 1);
    column->addWidget(m_previewRow);

    // The form the content opens as it expands: its fields, in order.
    m_formRow = new QWidget(this);
    auto* formLayout = new QHBoxLayout(m_formRow);
    formLayout->setContentsMargins(0, 0, 0, 0);
    formLayout->setSpacing(6);
    QLabel* formTitle = UiTheme::smallLabel(tr("Asks first:"), m_formRow);
    formTitle->setWordWrap(false);
    formLayout->addWidget(formTitle);
    m_form = UiTheme::smallLabel(QString(), m_formRow);
    m_form->setObjectName(QStringLiteral("placeholderForm"));
    m_form->setWordWrap(false);
    m_form->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    formLayout->addWidget(m_form, 1);
    column->addWidget(m_formRow);

    m_warning = UiTheme::smallLabel(QString(), this);
    m_warning->setObjectName(QStringLiteral("placeholderWarning"));
    m_warning->setWordWrap(false);
    m_warning->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    column->addWidget(m_warning);

    // The button lives in the form's layout beside the content field, so it is parented to
    // the form, not to this widget.
    m_menuButton = new QToolButton(parent);
    m_menuButton->setObjectName(QStringLiteral("placeholderMenuButton"));
    m_menuButton->setText(tr("{ }"));
    m_menuButton->setToolTip(tr("Insert a placeholder"));
    m_menuButton->setAccessibleName(tr("Insert a placeholder"));
    m_menuButton->setPopupMode(QToolButton::InstantPopup);
    m_menuButton->setAutoRaise(true);
    m_menuButton->setFocusPolicy(Qt::TabFocus);
    auto* menu = new QMenu(m_menuButton);
    menu->setObjectName(QStringLiteral("placeholderMenu"));
    const auto addInsert = [this, menu](const QString& label, const QString& name) {
        QAction* action = menu->addAction(label);
        action->setObjectName(QStringLiteral("insert-") + name);
        connect(action, &QAction::triggered, this,
                [this, name] { insert(QStringLiteral("{{%1}}").arg(name)); });
    };
    addInsert(tr("Date"), QStringLiteral("date"));
    addInsert(tr("Time"), QStringLiteral("time"));
    QAction* dateFormat = menu->addAction(tr("Date in a format…"));
    dateFormat->setObjectName(QStringLiteral("insert-date-format"));
    connect(dateFormat, &QAction::triggered, this, &PlaceholderBar::askForDateFormat);
    addInsert(tr("Clipboard"), QStringLiteral("clipboard"));
    addInsert(tr("Cursor position"), QStringLiteral("cursor"));
    menu->addSeparator();
    // Asked for in a small form when the snippet expands; the name is selected, to be typed over.
    const auto addField = [this, menu](const QString& label, const QString& objectName,
                                       const QString& prefix, const QString& name,
                                       const QString& rest) {
        QAction* action = menu->addAction(label);
        action->setObjectName(objectName);
        connect(action, &QAction::triggered, this,
                [this, prefix, name, rest] { insertField(prefix, name, rest); });
    };
    addField(tr("Fill-in field"), QStringLiteral("insert-field"), QStringLiteral("field:"),
             tr("Name"), QString());
    addField(tr("Fill-in field with a default"), QStringLiteral("insert-field-default"),
             QStringLiteral("field:"), tr("Name"), QStringLiteral("=") + tr("default"));
    addField(tr("Choice"), QStringLiteral("insert-choice"), QStringLiteral("choice:"), tr("Label"),
             QStringLiteral("=a|b|c"));
    addField(tr("Several lines"), QStringLiteral("insert-area"), QStringLiteral("area:"),
             tr("Name"), QString());
    m_menuButton->setMenu(menu);

    m_clockTimer.setInterval(1000);
    connect(&m_clockTimer, &QTimer::timeout, this, &PlaceholderBar::refresh);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &PlaceholderBar::refresh);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
        m_clipboard.reset();
        refresh();
    });
    refresh();
}

QString PlaceholderBar::previewText() const {
    return m_previewText;
}
QString PlaceholderBar::formText() const {
    return m_formText;
}
QString PlaceholderBar::warningText() const {
    return m_warning->toolTip();
}
bool PlaceholderBar::isPreviewShown() const {
    return !m_previewRow->isHidden();
}
bool PlaceholderBar::isWarningShown() const {
    return !m_warning->isHidden();
}

void PlaceholderBar::setAvailable(bool available) {
    setVisible(available);
    m_menuButton->setEnabled(available);
}

std::optional<QString> PlaceholderBar::clipboardText() {
    if (!m_clipboard) {
        // Read once per change of the clipboard: on X11 each read asks the program that owns it.
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        m_clipboard = std::optional<QString>();
        if (data && data->hasText() && !data->text().isEmpty())
            m_clipboard = std::optional<QString>(data->text());
    }
    return *m_clipboard;
}

void PlaceholderBar::refresh() {
    const PlaceholderText placeholders(m_editor->text());
    const bool dynamic = placeholders.isDynamic();
    if (dynamic) {
        std::optional<QString> clipboard;
        if (placeholders.uses(PlaceholderText::Kind::Clipboard))
            clipboard = clipboardText();
        m_previewText =
            placeholders.render(QDateTime::currentDateTime(), clipboard, QLocale()).text;
    } else {
        m_previewText.clear();
    }
    m_preview->setText(UiTheme::oneLine(m_previewText));
    m_previewRow->setVisible(dynamic);
    QStringList fields;
    for (const PlaceholderText::FormField& field : placeholders.formFields()) {
        using Kind = PlaceholderText::Kind;
        fields.append(field.kind == Kind::Choice ? tr("%1 (one of %2)")
                                                       .arg(field.name, field.options.join(u'/'))
                      : field.kind == Kind::Area ? tr("%1 (several lines)").arg(field.name)
                                                 : field.name);
    }
    m_formText = fields.join(QStringLiteral(", "));
    m_form->setText(UiTheme::oneLine(m_formText));
    m_form->setToolTip(m_formText);
    m_formRow->setVisible(!fields.isEmpty());
    const bool showsClock = placeholders.uses(PlaceholderText::Kind::Date) ||
                            placeholders.uses(PlaceholderText::Kind::Time);
    if (showsClock && !m_clockTimer.isActive())
        m_clockTimer.start();
    else if (!showsClock)
        m_clockTimer.stop();

    QStringList lines;
    for (const auto& issue : placeholders.issues()) {
        const QString line = warningFor(issue);
        if (!lines.contains(line))
            lines.append(line);
    }
    const QString first = lines.value(0);
    m_warning->setText(UiTheme::oneLine(lines.size() > 1 ? tr("%n problem(s) with braces. %1", nullptr,
                                             int(lines.size()))
                                              .arg(first)
                                        : first));
    m_warning->setToolTip(lines.join(u'\n'));
    m_warning->setVisible(!lines.isEmpty());
}

void PlaceholderBar::insert(const QString& placeholder) {
    QTextCursor cursor = m_editor->textCursor();
    cursor.insertText(placeholder);
    m_editor->setTextCursor(cursor);
    m_editor->setFocus();
}

void PlaceholderBar::insertField(const QString& prefix, const QString& name,
                                 const QString& rest) {
    QTextCursor cursor = m_editor->textCursor();
    cursor.insertText(QStringLiteral("{{") + prefix + name + rest + QStringLiteral("}}"));
    cursor.movePosition(QTextCursor::Left, QTextCursor::MoveAnchor, int(rest.size() + 2));
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, int(name.size()));
    m_editor->setTextCursor(cursor);
    m_editor->setFocus();
}

void PlaceholderBar::askForDateFormat() {
    auto* dialog = new QInputDialog(window());
    dialog->setObjectName(QStringLiteral("dateFormatDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setWindowTitle(tr("Date in a Format"));
    dialog->setLabelText(tr("Format of the date and time, for example yyyy-MM-dd or "
                            "dd.MM.yyyy HH:mm:"));
    dialog->setTextValue(QStringLiteral("yyyy-MM-dd"));
    connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& format) {
        // A format cannot reach over a line or hold the closing braces.
        QString clean = format;
        clean.remove(u'\n').remove(u'\r').remove(QStringLiteral("}}"));
        insert(clean.isEmpty() ? QStringLiteral("{{date}}")
                               : QStringLiteral("{{date:%1}}").arg(clean));
    });
    dialog->open();
}
