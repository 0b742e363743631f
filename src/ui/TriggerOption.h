#pragma once

#include "Snippet.h"
#include "SnippetStore.h"

#include <QUuid>
#include <QWidget>

class QCheckBox;
class QLabel;
class QPushButton;

// Under a command field: whether the command fires at once or only once a word ends after
// it, and the warning when the command shows up inside another one, with its cure at hand
// (let the shorter command wait for the word to end, whichever snippet it belongs to).
//
// A cure that changes another snippet is only chosen here; the form makes it together with its
// own add or save (applyChosenCure()), so a form that is cancelled changes no other snippet.
// The warning and the cure come after the option, so Tab reaches the cure right after it.
class TriggerOption : public QWidget {
    Q_OBJECT
public:
    TriggerOption(SnippetStore& store, QWidget* parent = nullptr);

    Snippet::Trigger trigger() const;
    // Shown as given; not a change by the user.
    void setTrigger(Snippet::Trigger trigger);

    // Looks again for a clash of `command` (belonging to `snippetId`, null for a new one).
    void check(const QString& command, const QUuid& snippetId);
    // What else of the snippet decides a clash: whether it matches the command's case, and
    // its category (whose applications may not overlap the other snippet's). Checks again.
    void setContext(bool matchCase, const QUuid& categoryId);

    bool showingClash() const;
    // The other snippet the chosen cure will change; null when none is chosen.
    QUuid chosenCure() const { return m_chosenCure; }
    void forgetChosenCure();
    // Makes the chosen cure (a snippet deleted meanwhile needs none); says why it was not saved.
    std::optional<DataError> applyChosenCure();
    QCheckBox* checkBox() const { return m_checkBox; }
    QPushButton* cureButton() const { return m_cure; }

signals:
    // The user switched the option.
    void triggerEdited();
    // The warning came, went or says something else: the room it takes changed.
    void warningChanged();
    // A cure of another snippet was chosen or forgotten.
    void chosenCureChanged();

private:
    void cure();

    SnippetStore& m_store;
    QString m_command;
    QUuid m_snippetId;
    bool m_matchCase = false;
    QUuid m_categoryId;
    SnippetStore::CommandClash m_clash;
    QUuid m_chosenCure;
    QString m_chosenCureCommand;
    bool m_settingTrigger = false;

    QCheckBox* m_checkBox;
    QLabel* m_warning;
    QPushButton* m_cure;
};
