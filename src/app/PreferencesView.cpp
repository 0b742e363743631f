#include "PreferencesView.h"

#include "Autostart.h"
#include "KeyboardLayoutCatalogue.h"
#include "Preferences.h"
#include "SyncCard.h"
#include "UiTheme.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QVBoxLayout>

PreferencesView::PreferencesView(Autostart& autostart, Preferences& preferences, SyncFolder* sync,
                                 QWidget* parent)
    : QWidget(parent), m_autostart(autostart), m_preferences(preferences) {
    setFixedWidth(viewWidth);

    auto* root = new QVBoxLayout(this);

    buildGeneralGroup();
    buildExclusionsGroup();
    root->addWidget(m_generalGroup);
    root->addWidget(m_exclusionsGroup);
    if (sync) {
        m_syncCard = new SyncCard(*sync, m_preferences, this);
        root->addWidget(m_syncCard);
    }

    connect(m_startAtLogin, &QCheckBox::toggled, this, [this](bool on) {
        m_preferences.setStartAtLogin(on);
        m_autostart.setStartAtLogin(on);
        // A failed change shows at once: the box goes back to what will happen.
        m_autostart.reflectDesktop(m_preferences);
    });
    connect(&m_preferences, &Preferences::startAtLoginChanged, m_startAtLogin, [this](bool on) {
        if (m_startAtLogin->isChecked() != on)
            m_startAtLogin->setChecked(on);
    });
    connect(m_undo, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.setUndoWithBackspace(on); });
    connect(m_saveEdits, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.setSaveEditsOnLeave(on); });
    connect(&m_preferences, &Preferences::saveEditsOnLeaveChanged, m_saveEdits,
            [this](bool on) { m_saveEdits->setChecked(on); });
    connect(m_paste, &QCheckBox::toggled, this, [this](bool on) {
        m_preferences.setPasteLongSnippets(on);
        m_pasteThreshold->setEnabled(on);
    });
    // Written when the value is settled (Return, leaving the box, an arrow), not per digit.
    m_pasteThreshold->setKeyboardTracking(false);
    connect(m_pasteThreshold, &QSpinBox::valueChanged, this,
            [this](int characters) { m_preferences.setPasteThreshold(characters); });
}

void PreferencesView::buildGeneralGroup() {
    m_generalGroup = new QGroupBox(tr("General"), this);
    auto* content = new QVBoxLayout(m_generalGroup);

    m_startAtLogin = addCheckBox(content, tr("Start at Login"),
                                 tr("Automatically start Typolet when you log in"),
                                 m_preferences.startAtLogin());
    m_undo = addCheckBox(content, tr("Undo with BackSpace"),
                         tr("BackSpace right after an expansion puts the command back"),
                         m_preferences.undoWithBackspace());
    m_saveEdits = addCheckBox(content, tr("Save edits automatically"),
                              tr("Leaving a snippet or quitting saves its changes "
                                 "without asking"),
                              m_preferences.saveEditsOnLeave());
    m_paste = addCheckBox(content, tr("Paste long snippets"),
                          tr("Long contents are pasted, far quicker than typing; your "
                             "clipboard is kept"),
                          m_preferences.pasteLongSnippets());
    auto* thresholdRow = new QHBoxLayout();
    auto* thresholdTitle = new QLabel(tr("Paste contents from"), m_generalGroup);
    thresholdRow->addWidget(thresholdTitle, 1);
    m_pasteThreshold = new QSpinBox(m_generalGroup);
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
    auto* keysTitle = new QLabel(tr("Pause and resume from anywhere"), m_generalGroup);
    keysTitle->setWordWrap(true);
    keysRow->addWidget(keysTitle, 1);
    m_pauseKeys = new QKeySequenceEdit(m_preferences.pauseKeys(), m_generalGroup);
    m_pauseKeys->setAccessibleName(keysTitle->text());
    m_pauseKeys->setMinimumWidth(140); // "Ctrl+Alt+Space" whole
    keysTitle->setBuddy(m_pauseKeys);
    keysRow->addWidget(m_pauseKeys);
    content->addLayout(keysRow);
    if (!m_preferences.canGrabPauseKeys()) {
        m_pauseKeys->setEnabled(false);
        QLabel* why = UiTheme::smallLabel(tr("This session lets no program take keys from the "
                                             "others: pause from the tray or the File menu."),
                                          m_generalGroup);
        content->addWidget(why);
    }
    // One combination: the first one typed.
    connect(m_pauseKeys, &QKeySequenceEdit::editingFinished, this, [this] {
        const QKeySequence typed = m_pauseKeys->keySequence();
        const QKeySequence keys = typed.isEmpty() ? QKeySequence() : QKeySequence(typed[0]);
        m_pauseKeys->setKeySequence(keys);
        m_preferences.setPauseKeys(keys);
    });
    addInsertRows(content);
    addLayoutRow(content);
}

void PreferencesView::addInsertRows(QVBoxLayout* content) {
    auto* keysRow = new QHBoxLayout();
    auto* keysTitle = new QLabel(tr("Open Insert Snippet from anywhere"), m_generalGroup);
    keysTitle->setWordWrap(true);
    keysRow->addWidget(keysTitle, 1);
    m_insertKeys = new QKeySequenceEdit(m_preferences.insertKeys(), m_generalGroup);
    m_insertKeys->setObjectName(QStringLiteral("insertKeys"));
    m_insertKeys->setAccessibleName(keysTitle->text());
    m_insertKeys->setMinimumWidth(140);
    keysTitle->setBuddy(m_insertKeys);
    keysRow->addWidget(m_insertKeys);
    content->addLayout(keysRow);
    if (!m_preferences.canGrabPauseKeys()) {
        m_insertKeys->setEnabled(false);
        content->addWidget(UiTheme::smallLabel(tr("Bind \u201Ctypolet --insert\u201D to keys in "
                                                  "your desktop's keyboard settings instead."),
                                               m_generalGroup));
    }
    connect(m_insertKeys, &QKeySequenceEdit::editingFinished, this, [this] {
        const QKeySequence typed = m_insertKeys->keySequence();
        const QKeySequence keys = typed.isEmpty() ? QKeySequence() : QKeySequence(typed[0]);
        m_insertKeys->setKeySequence(keys);
        m_preferences.setInsertKeys(keys);
    });

    m_countUsage = addCheckBox(content, tr("Count snippet use"),
                               tr("Snippets used often come first in Insert Snippet; the counts "
                                  "stay on this computer"),
                               m_preferences.countUsage());
    m_countUsage->setObjectName(QStringLiteral("countUsage"));
    connect(m_countUsage, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.setCountUsage(on); });
    m_clearUsage = new QPushButton(tr("Clear Counts"), m_generalGroup);
    m_clearUsage->setObjectName(QStringLiteral("clearUsage"));
    m_clearUsage->setAccessibleName(tr("Clear the snippet use counts"));
    auto* clearRow = new QHBoxLayout();
    clearRow->addStretch(1);
    clearRow->addWidget(m_clearUsage);
    content->addLayout(clearRow);
    connect(m_clearUsage, &QPushButton::clicked, this, [this] { m_preferences.clearUsage(); });
}

void PreferencesView::addLayoutRow(QVBoxLayout* content) {
    m_layoutRow = new QWidget(m_generalGroup);
    auto* column = new QVBoxLayout(m_layoutRow);
    column->setContentsMargins(0, 0, 0, 0);
    auto* row = new QHBoxLayout();
    auto* title = new QLabel(tr("Keyboard layout"), m_layoutRow);
    row->addWidget(title, 1);
    m_layoutChoice = new QComboBox(m_layoutRow);
    m_layoutChoice->setAccessibleName(title->text());
    m_layoutChoice->setMaximumWidth(200);
    title->setBuddy(m_layoutChoice);
    row->addWidget(m_layoutChoice);
    column->addLayout(row);
    m_layoutInUse = UiTheme::smallLabel({}, m_layoutRow);
    column->addWidget(m_layoutInUse);
    content->addWidget(m_layoutRow);

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

QCheckBox* PreferencesView::addCheckBox(QVBoxLayout* content, const QString& title,
                                        const QString& detail, bool checked) {
    auto* box = new QCheckBox(title, m_generalGroup);
    box->setChecked(checked);
    content->addWidget(box);
    QLabel* detailLabel = UiTheme::smallLabel(detail, m_generalGroup);
    // Under the box's text, not under its indicator.
    const int indent = box->style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, box) +
                       box->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, box);
    detailLabel->setContentsMargins(indent, 0, 0, 0);
    content->addWidget(detailLabel);
    return box;
}

void PreferencesView::buildExclusionsGroup() {
    m_exclusionsGroup = new QGroupBox(tr("Excluded Applications"), this);
    auto* content = new QVBoxLayout(m_exclusionsGroup);
    QLabel* hint =
        UiTheme::smallLabel(m_preferences.canTellApplications()
                                ? tr("Nothing expands in these. To add one, open the tray menu "
                                     "while it is in use and choose \"Exclude\".")
                                : tr("This session does not tell Typolet which application is "
                                     "in use, so these apply in X11 sessions only."),
                            m_exclusionsGroup);
    content->addWidget(hint);
    auto* row = new QHBoxLayout();
    m_exclusions = new QListWidget(m_exclusionsGroup);
    m_exclusions->setAccessibleName(tr("Excluded Applications"));
    m_exclusions->setMaximumHeight(72);
    row->addWidget(m_exclusions, 1);
    m_removeExclusion = new QPushButton(tr("Remove"), m_exclusionsGroup);
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
    m_startAtLogin->setChecked(m_preferences.startAtLogin());
}
