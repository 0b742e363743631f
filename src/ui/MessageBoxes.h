#pragma once

#include "DataError.h"

#include <QCoreApplication>
#include <optional>

class QMessageBox;
class QWidget;

// The editor's two kinds of message box: the question before something is deleted, and the
// notice that a change could not be saved.
class MessageBoxes {
    Q_DECLARE_TR_FUNCTIONS(MessageBoxes)
public:
    // A window-modal question with a destructive "Delete" (named "alertDeleteButton") and
    // "Cancel" (the default, and Escape). The caller connects to "Delete" and calls open().
    static QMessageBox* confirmDelete(const QString& title, const QString& message,
                                      QWidget* parent);

    // Whether the store refused a change (the form then says why). A change that was made but
    // could not be saved is not refused: the user is told in a message box, and it stays.
    static bool refused(const std::optional<DataError>& error, QWidget* parent);
};
