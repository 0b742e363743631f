#pragma once

#include <QGroupBox>

class Preferences;
class QLabel;
class QListWidget;
class QPushButton;
class SyncFolder;

// The Preferences window's "Sync" group: "Sync through a folder" with a folder chooser, the
// folder in use, the computers whose libraries are there (name, number of snippets, last
// change) and "Stop Syncing". Choosing a folder that already holds other computers' libraries
// merges them with this one and says what that added. Files in the folder that cannot be read
// and changes that collided with another computer's are named under the list.
class SyncCard : public QGroupBox {
    Q_OBJECT
public:
    SyncCard(SyncFolder& sync, Preferences& preferences, QWidget* parent = nullptr);

    // What the folder chooser does with the folder picked (the chooser is the desktop's own
    // dialog; tests call this directly).
    void chooseFolder(const QString& folder);
    void stopSyncing();

    QPushButton* chooseButton() const { return m_choose; }
    QPushButton* stopButton() const { return m_stop; }
    QLabel* folderLabel() const { return m_folder; }
    QListWidget* computerList() const { return m_computers; }
    // What the last choice did, or why it could not be made.
    QLabel* statusLabel() const { return m_status; }
    // Files that cannot be read, and collisions with other computers' changes.
    QLabel* problemsLabel() const { return m_problems; }

private:
    void showStatus(const QString& text);
    void showState();
    void showProblems();

    SyncFolder& m_sync;
    Preferences& m_preferences;
    QPushButton* m_choose = nullptr;
    QPushButton* m_stop = nullptr;
    QLabel* m_folder = nullptr;
    QListWidget* m_computers = nullptr;
    QLabel* m_status = nullptr;
    QLabel* m_problems = nullptr;
    QString m_collisions;
};
