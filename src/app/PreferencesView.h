#pragma once

#include <QWidget>

class Autostart;
class Preferences;
class PreferenceCard;
class QComboBox;
class QLabel;
class QKeySequenceEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class SectionHeader;
class SyncCard;
class SyncFolder;
class ToggleSwitch;
class ToneLabel;

// The content of the Preferences window: a "General" card with the start-at-login, the
// undo-with-BackSpace and the paste switches (the paste threshold beside the last), the pause
// keys, whether edits are saved without asking and, in a Wayland session, the keyboard layout;
// the applications where nothing expands; and, when given the synced folder, the "Sync"
// card (SyncCard).
//
// The start-at-login switch adds and removes the autostart entry and shows whether Typolet
// will start at login. Each time the view appears it gives Autostart the chance to apply the
// first-appearance default (switch on, entry written), which has an effect only the very
// first time.
class PreferencesView : public QWidget {
    Q_OBJECT
public:
    PreferencesView(Autostart& autostart, Preferences& preferences, SyncFolder* sync = nullptr,
                    QWidget* parent = nullptr);

    ToggleSwitch* startAtLoginSwitch() const { return m_switch; }
    ToggleSwitch* undoSwitch() const { return m_undoSwitch; }
    ToggleSwitch* pasteSwitch() const { return m_pasteSwitch; }
    ToggleSwitch* saveEditsSwitch() const { return m_saveEditsSwitch; }
    QSpinBox* pasteThresholdBox() const { return m_pasteThreshold; }
    // The desktop-wide keys that pause and resume expansion.
    QKeySequenceEdit* pauseKeysEdit() const { return m_pauseKeys; }
    // The desktop-wide keys that open the insert window; counting snippet use, and forgetting it.
    QKeySequenceEdit* insertKeysEdit() const { return m_insertKeys; }
    ToggleSwitch* countUsageSwitch() const { return m_countUsageSwitch; }
    QPushButton* clearUsageButton() const { return m_clearUsage; }
    // The keyboard layout in use and the choice of another; shown only where it can be chosen.
    QComboBox* layoutChoice() const { return m_layoutChoice; }
    ToneLabel* layoutInUseLabel() const { return m_layoutInUse; }
    // The applications where nothing expands, and the button that takes the selected one out.
    QListWidget* exclusionList() const { return m_exclusions; }
    QPushButton* removeExclusionButton() const { return m_removeExclusion; }
    PreferenceCard* generalCard() const { return m_generalCard; }
    // Null when the view was made without the synced folder.
    SyncCard* syncCard() const { return m_syncCard; }
    SectionHeader* generalHeader() const { return m_generalHeader; }

    static constexpr int viewWidth = 432;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildGeneralCard();
    void buildExclusionsCard();
    void showExclusions(const QStringList& names);
    void addInsertRows();
    void addLayoutRow();
    void showLayoutInUse(const QString& description);
    // A titled, explained switch under the General header.
    ToggleSwitch* addSwitchRow(const QString& title, const QString& detail, bool checked);

    Autostart& m_autostart;
    Preferences& m_preferences;
    PreferenceCard* m_generalCard = nullptr;
    SyncCard* m_syncCard = nullptr;
    PreferenceCard* m_exclusionsCard = nullptr;
    QListWidget* m_exclusions = nullptr;
    QPushButton* m_removeExclusion = nullptr;
    SectionHeader* m_generalHeader = nullptr;
    ToggleSwitch* m_switch = nullptr;
    ToggleSwitch* m_undoSwitch = nullptr;
    ToggleSwitch* m_pasteSwitch = nullptr;
    ToggleSwitch* m_saveEditsSwitch = nullptr;
    QSpinBox* m_pasteThreshold = nullptr;
    QKeySequenceEdit* m_pauseKeys = nullptr;
    QKeySequenceEdit* m_insertKeys = nullptr;
    ToggleSwitch* m_countUsageSwitch = nullptr;
    QPushButton* m_clearUsage = nullptr;
    QWidget* m_layoutRow = nullptr;
    QComboBox* m_layoutChoice = nullptr;
    ToneLabel* m_layoutInUse = nullptr;
};
