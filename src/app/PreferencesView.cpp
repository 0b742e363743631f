#include "PreferencesView.h"

#include "Autostart.h"
#include "KeyboardLayoutCatalogue.h"
#include "Preferences.h"
#include "PreferenceCard.h"
#include "SectionHeader.h"
#include "SymbolImage.h"
#include "SyncCard.h"
#include "UiTheme.h"
#include "ToggleSwitch.h"
#include "ToneLabel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {
// Texts under a header line up with the header's title: icon 24 + spacing 12.
constexpr int textIndent = SectionHeader::iconSize + SectionHeader::spacing;
} // namespace

PreferencesView::PreferencesView(Autostart& autostart, Preferences& preferences,
                                 SyncFolder* sync, QWidget* parent)
    : QWidget(parent), m_autostart(autostart), m_preferences(preferences) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    setFixedWidth(viewWidth);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(16, 16, 16, 16);
    root->setSpacing(12);

    buildGeneralCard();
    buildExclusionsCard();
    root->addWidget(m_generalCard, 0, Qt::AlignHCenter);
    root->addWidget(m_exclusionsCard, 0, Qt::AlignHCenter);
    if (sync) {
        m_syncCard = new SyncCard(*sync, m_preferences, this);
        root->addWidget(m_syncCard, 0, Qt::AlignHCenter);
    }

    connect(m_switch, &ToggleSwitch::toggled, this,
            [this](bool on) {
                m_preferences.setStartAtLogin(on);
                m_autostart.setStartAtLogin(on);
                // A failed change shows at once: the switch goes back to what will happen.
                m_autostart.reflectDesktop(m_preferences);
            });
    connect(&m_preferences, &Preferences::startAtLoginChanged, m_switch, [this](bool on) {
        if (m_switch->isChecked() != on)
            m_switch->setChecked(on);
    });
    connect(m_undoSwitch, &ToggleSwitch::toggled, this,
            [this](bool on) { m_preferences.setUndoWithBackspace(on); });
    connect(m_saveEditsSwitch, &ToggleSwitch::toggled, this,
            [this](bool on) { m_preferences.setSaveEditsOnLeave(on); });
    connect(&m_preferences, &Preferences::saveEditsOnLeaveChanged, m_saveEditsSwitch,
            [this](bool on) { m_saveEditsSwitch->setChecked(on); });
    connect(m_pasteSwitch, &ToggleSwitch::toggled, this, [this](bool on) {
        m_preferences.setPasteLongSnippets(on);
        m_pasteThreshold->setEnabled(on);
    });
    // Written when the value is settled (Return, leaving the box, an arrow), not per digit.
    m_pasteThreshold->setKeyboardTracking(false);
    connect(m_pasteThreshold, &QSpinBox::valueChanged, this,
            [this](int characters) { m_preferences.setPasteThreshold(characters); });
}

void PreferencesView::buildGeneralCard() {
    m_generalCard = new PreferenceCard(this);
    QVBoxLayout* content = m_generalCard->contentLayout();

    m_generalHeader = new SectionHeader(QStringLiteral("gearshape.fill"), tr("General"),
                                        {}, m_generalCard);
    content->addWidget(m_generalHeader);

    m_switch = addSwitchRow(tr("Start at Login"), tr("Automatically start Typolet when you log in"),
                            m_preferences.startAtLogin());
    m_undoSwitch = addSwitchRow(tr("Undo with BackSpace"),
                                tr("BackSpace right after an expansion puts the command back"),
                                m_preferences.undoWithBackspace());
    m_saveEditsSwitch = addSwitchRow(tr("Save edits automatically"),
                                     tr("Leaving a snippet or quitting saves its changes "
                                        "without asking"),
                                     m_preferences.saveEditsOnLeave());
    m_pasteSwitch = addSwitchRow(tr("Paste long snippets"),
                                 tr("Long contents are pasted, far quicker than typing; your "
                                    "clipboard is kept"),
                                 m_preferences.pasteLongSnippets());
    auto* thresholdRow = new QHBoxLayout();
    thresholdRow->setContentsMargins(textIndent, 0, 0, 0);
    auto* thresholdTitle = new QLabel(tr("Paste contents from"), m_generalCard);
    thresholdTitle->setFont(UiTheme::system(14, QFont::Medium));
    thresholdRow->addWidget(thresholdTitle, 1);
    m_pasteThreshold = new QSpinBox(m_generalCard);
    m_pasteThreshold->setRange(Preferences::minimumPasteThreshold,
                               Preferences::maximumPasteThreshold);
    m_pasteThreshold->setValue(m_preferences.pasteThreshold());
    m_pasteThreshold->setSuffix(tr(" characters"));
    m_pasteThreshold->setAccessibleName(thresholdTitle->text());
    m_pasteThreshold->setEnabled(m_preferences.pasteLongSnippets());
    thresholdTitle->setBuddy(m_pasteThreshold);
    thresholdRow->addWidget(m_pasteThreshold);
    content->addLayout(thresholdRow);

    auto* keysRow = new QHBoxLayout();
    keysRow->setContentsMargins(textIndent, 0, 0, 0);
    auto* keysTitle = new QLabel(tr("Pause and resume from anywhere"), m_generalCard);
    keysTitle->setFont(UiTheme::system(14, QFont::Medium));
    keysTitle->setWordWrap(true);
    keysRow->addWidget(keysTitle, 1);
    m_pauseKeys = new QKeySequenceEdit(m_preferences.pauseKeys(), m_generalCard);
    m_pauseKeys->setAccessibleName(keysTitle->text());
    m_pauseKeys->setMinimumWidth(140); // "Ctrl+Alt+Space" whole
    keysTitle->setBuddy(m_pauseKeys);
    keysRow->addWidget(m_pauseKeys);
    m_generalCard->contentLayout()->addLayout(keysRow);
    if (!m_preferences.canGrabPauseKeys()) {
        m_pauseKeys->setEnabled(false);
        auto* why = new ToneLabel(tr("This session lets no program take keys from the others: "
                                     "pause from the tray or the File menu."),
                                  ToneLabel::Tone::Tertiary, m_generalCard);
        why->setFont(UiTheme::system(12));
        why->setWordWrap(true);
        why->setContentsMargins(textIndent, 0, 0, 0);
        m_generalCard->contentLayout()->addWidget(why);
    }
    // One combination: the first one typed.
    connect(m_pauseKeys, &QKeySequenceEdit::editingFinished, this, [this] {
        const QKeySequence typed = m_pauseKeys->keySequence();
        const QKeySequence keys = typed.isEmpty() ? QKeySequence() : QKeySequence(typed[0]);
        m_pauseKeys->setKeySequence(keys);
        m_preferences.setPauseKeys(keys);
    });
    addInsertRows();
    addLayoutRow();
    content->addStretch(1);
}

void PreferencesView::addInsertRows() {
    auto* keysRow = new QHBoxLayout();
    keysRow->setContentsMargins(textIndent, 0, 0, 0);
    auto* keysTitle = new QLabel(tr("Open Insert Snippet from anywhere"), m_generalCard);
    keysTitle->setFont(UiTheme::system(14, QFont::Medium));
    keysTitle->setWordWrap(true);
    keysRow->addWidget(keysTitle, 1);
    m_insertKeys = new QKeySequenceEdit(m_preferences.insertKeys(), m_generalCard);
    m_insertKeys->setObjectName(QStringLiteral("insertKeys"));
    m_insertKeys->setAccessibleName(keysTitle->text());
    m_insertKeys->setMinimumWidth(140);
    m_insertKeys->setEnabled(m_preferences.canGrabPauseKeys());
    keysTitle->setBuddy(m_insertKeys);
    keysRow->addWidget(m_insertKeys);
    m_generalCard->contentLayout()->addLayout(keysRow);
    if (!m_preferences.canGrabPauseKeys()) {
        auto* why = new ToneLabel(tr("Bind “typolet --insert” to keys in your desktop's keyboard "
                                     "settings instead."),
                                  ToneLabel::Tone::Tertiary, m_generalCard);
        why->setFont(UiTheme::system(12));
        why->setWordWrap(true);
        why->setContentsMargins(textIndent, 0, 0, 0);
        m_generalCard->contentLayout()->addWidget(why);
    }
    connect(m_insertKeys, &QKeySequenceEdit::editingFinished, this, [this] {
        const QKeySequence typed = m_insertKeys->keySequence();
        const QKeySequence keys = typed.isEmpty() ? QKeySequence() : QKeySequence(typed[0]);
        m_insertKeys->setKeySequence(keys);
        m_preferences.setInsertKeys(keys);
    });

    m_countUsageSwitch = addSwitchRow(tr("Count snippet use"),
                                      tr("Snippets used often come first in Insert Snippet; the "
                                         "counts stay on this computer"),
                                      m_preferences.countUsage());
    m_countUsageSwitch->setObjectName(QStringLiteral("countUsage"));
    connect(m_countUsageSwitch, &ToggleSwitch::toggled, this,
            [this](bool on) { m_preferences.setCountUsage(on); });
    m_clearUsage = new QPushButton(tr("Clear Counts"), m_generalCard);
    m_clearUsage->setObjectName(QStringLiteral("clearUsage"));
    m_clearUsage->setAccessibleName(tr("Clear the snippet use counts"));
    auto* clearRow = new QHBoxLayout();
    clearRow->setContentsMargins(textIndent, 0, 0, 0);
    clearRow->addStretch(1);
    clearRow->addWidget(m_clearUsage);
    m_generalCard->contentLayout()->addLayout(clearRow);
    connect(m_clearUsage, &QPushButton::clicked, this, [this] { m_preferences.clearUsage(); });
}

void PreferencesView::addLayoutRow() {
    m_layoutRow = new QWidget(m_generalCard);
    auto* column = new QVBoxLayout(m_layoutRow);
    column->setContentsMargins(textIndent, 0, 0, 0);
    column->setSpacing(4);
    auto* row = new QHBoxLayout();
    auto* title = new QLabel(tr("Keyboard layout"), m_layoutRow);
    title->setFont(UiTheme::system(14, QFont::Medium));
    row->addWidget(title, 1);
    m_layoutChoice = new QComboBox(m_layoutRow);
    m_layoutChoice->setAccessibleName(title->text());
    m_layoutChoice->setMaximumWidth(200);
    title->setBuddy(m_layoutChoice);
    row->addWidget(m_layoutChoice);
    column->addLayout(row);
    m_layoutInUse = new ToneLabel({}, ToneLabel::Tone::Tertiary, m_layoutRow);
    m_layoutInUse->setFont(UiTheme::system(12));
    m_layoutInUse->setWordWrap(true);
    column->addWidget(m_layoutInUse);
    m_generalCard->contentLayout()->addWidget(m_layoutRow);

    showLayoutInUse(m_preferences.layoutInUse());
    connect(&m_preferences, &Preferences::layoutInUseChanged, this,
            &PreferencesView::showLayoutInUse);
    connect(m_layoutChoice, &QComboBox::activated, this, [this](int index) {
        m_preferences.setKeyboardLayout(m_layoutChoice->itemData(index).toString());
    });
}

void PreferencesView::showLayoutInUse(const QString& description) {
    // Only where the layout can be chosen; X11 sessions use the server's.
    m_layoutRow->setVisible(!description.isEmpty());
    m_layoutInUse->setText(tr("In use: %1").arg(description));
    if (description.isEmpty() || m_layoutChoice->count() > 0)
        return;
    m_layoutChoice->addItem(tr("As the desktop has it"), QString());
    for (const auto& entry : KeyboardLayoutCatalogue::read())
        m_layoutChoice->addItem(entry.description, entry.name);
    const int chosen = m_layoutChoice->findData(m_preferences.keyboardLayout());
    m_layoutChoice->setCurrentIndex(std::max(chosen, 0));
}

ToggleSwitch* PreferencesView::addSwitchRow(const QString& title, const QString& detail,
                                            bool checked) {
    auto* row = new QHBoxLayout();
    row->setContentsMargins(textIndent, 0, 0, 0);
    row->setSpacing(12);
    auto* labels = new QVBoxLayout();
    labels->setSpacing(4);
    auto* titleLabel = new QLabel(title, m_generalCard);
    titleLabel->setFont(UiTheme::system(14, QFont::Medium));
    auto* detailLabel = new ToneLabel(detail, ToneLabel::Tone::Tertiary, m_generalCard);
    detailLabel->setFont(UiTheme::system(12));
    detailLabel->setWordWrap(true);
    labels->addWidget(titleLabel);
    labels->addWidget(detailLabel);
    row->addLayout(labels, 1);

    auto* toggle = new ToggleSwitch(m_generalCard);
    toggle->setAccessibleName(title);
    toggle->setChecked(checked);
    titleLabel->setBuddy(toggle);
    row->addWidget(toggle, 0, Qt::AlignVCenter);
    m_generalCard->contentLayout()->addLayout(row);
    return toggle;
}

void PreferencesView::buildExclusionsCard() {
    m_exclusionsCard = new PreferenceCard(this);
    QVBoxLayout* content = m_exclusionsCard->contentLayout();
    content->addWidget(new SectionHeader(QStringLiteral("xmark.circle.fill"),
                                         tr("Excluded Applications"), {}, m_exclusionsCard));
    auto* hint = new ToneLabel(m_preferences.canTellApplications()
                                   ? tr("Nothing expands in these. To add one, open the tray menu "
                                        "while it is in use and choose \"Exclude\".")
                                   : tr("This session does not tell Typolet which application is "
                                        "in use, so these apply in X11 sessions only."),
                               ToneLabel::Tone::Tertiary, m_exclusionsCard);
    hint->setFont(UiTheme::system(12));
    hint->setWordWrap(true);
    hint->setContentsMargins(textIndent, 0, 0, 0);
    content->addWidget(hint);
    auto* row = new QHBoxLayout();
    row->setContentsMargins(textIndent, 0, 0, 0);
    m_exclusions = new QListWidget(m_exclusionsCard);
    m_exclusions->setAccessibleName(tr("Excluded Applications"));
    m_exclusions->setMaximumHeight(72);
    row->addWidget(m_exclusions, 1);
    m_removeExclusion = new QPushButton(tr("Remove"), m_exclusionsCard);
    row->addWidget(m_removeExclusion, 0, Qt::AlignTop);
    content->addLayout(row);

    showExclusions(m_preferences.excludedApplications());
    connect(&m_preferences, &Preferences::excludedApplicationsChanged, this,
            &PreferencesView::showExclusions);
    connect(m_exclusions, &QListWidget::currentRowChanged, this,
            [this](int row) { m_removeExclusion->setEnabled(row >= 0); });
    connect(m_removeExclusion, &QAbstractButton::clicked, this, [this] {
        QStringList names = m_preferences.excludedApplications();
        names.removeAt(m_exclusions->currentRow());
        m_preferences.setExcludedApplications(names);
    });
}

void PreferencesView::showExclusions(const QStringList& names) {
    m_exclusions->clear();
    m_exclusions->addItems(names);
    m_removeExclusion->setEnabled(false);
}

void PreferencesView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_autostart.applyFirstLaunchDefault(m_preferences);
    m_autostart.reflectDesktop(m_preferences);
    // The stored value may have been changed elsewhere while the window was hidden.
    m_switch->setChecked(m_preferences.startAtLogin());
}
