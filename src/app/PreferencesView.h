#pragma once

#include <QWidget>

class Autostart;
class Preferences;
class QCheckBox;
class QGroupBox;
class QComboBox;
class QLabel;
class QKeySequenceEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QVBoxLayout;
class SyncCard;
class SyncFolder;

// The content of the Preferences window: a "General" group with the start-at-login, the
// undo-with-BackSpace and the paste check boxes (the paste threshold beside the last), the pause
// keys, whether edits are saved without asking and, in a Wayland session, the keyboard layout;
// the applications where nothing expands; and, when given the synced folder, the "Sync"
// group (SyncCard).
//
// The start-at-login box adds and removes the autostart entry and shows whether Typolet
// will start at login. Each time the view appears it gives Autostart the chance to apply the
// first-appearance default (box checked, entry written), which has an effect only the very
// first time.
class PreferencesView : public QWidget {
    Q_OBJECT
public:
    PreferencesView(Autostart& autostart, Preferences& preferences, SyncFolder* sync = nullptr,
                    QWidget* parent = nullptr);

    QCheckBox* startAtLoginBox() const { return m_startAtLogin; }
    QCheckBox* undoBox() const { return m_undo; }
    QCheckBox* pasteBox() const { return m_paste; }
    QCheckBox* saveEditsBox() const { return m_saveEdits; }
    QSpinBox* pasteThresholdBox() const { return m_pasteThreshold; }
    // The desktop-wide keys that pause and resume expansion.
    QKeySequenceEdit* pauseKeysEdit() const { return m_pauseKeys; }
    // The desktop-wide keys that open the insert window; counting snippet use, and forgetting it.
    QKeySequenceEdit* insertKeysEdit() const { return m_insertKeys; }
    QCheckBox* countUsageBox() const { return m_countUsage; }
    QPushButton* clearUsageButton() const { return m_clearUsage; }
    // The keyboard layout in use and the choice of another; shown only where it can be chosen.
    QComboBox* layoutChoice() const { return m_layoutChoice; }
    QLabel* layoutInUseLabel() const { return m_layoutInUse; }
    // The applications where nothing expands, and the button that takes the selected one out.
    QListWidget* exclusionList() const { return m_exclusions; }
    QPushButton* removeExclusionButton() const { return m_removeExclusion; }
    QGroupBox* generalGroup() const { return m_generalGroup; }
    // Null when the view was made without the synced folder.
    SyncCard* syncCard() const { return m_syncCard; }

    static constexpr int viewWidth = 432;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildGeneralGroup();
    void buildExclusionsGroup();
    void showExclusions(const QStringList& names);
    void addInsertRows(QVBoxLayout* content);
    void addLayoutRow(QVBoxLayout* content);
    void showLayoutInUse(const QString& description);
    // A check box under the General title, with a line that explains it.
    QCheckBox* addCheckBox(QVBoxLayout* content, const QString& title, const QString& detail, bool checked);

    Autostart& m_autostart;
    Preferences& m_preferences;
    QGroupBox* m_generalGroup = nullptr;
    SyncCard* m_syncCard = nullptr;
    QGroupBox* m_exclusionsGroup = nullptr;
    QListWidget* m_exclusions = nullptr;
    QPushButton* m_removeExclusion = nullptr;
    QCheckBox* m_startAtLogin = nullptr;
    QCheckBox* m_undo = nullptr;
    QCheckBox* m_paste = nullptr;
    QCheckBox* m_saveEdits = nullptr;
    QSpinBox* m_pasteThreshold = nullptr;
    QKeySequenceEdit* m_pauseKeys = nullptr;
    QKeySequenceEdit* m_insertKeys = nullptr;
    QCheckBox* m_countUsage = nullptr;
    QPushButton* m_clearUsage = nullptr;
    QWidget* m_layoutRow = nullptr;
    QComboBox* m_layoutChoice = nullptr;
    QLabel* m_layoutInUse = nullptr;
};
