#pragma once

#include "DataError.h"

#include <QColor>
#include <QCoreApplication>
#include <QFont>
#include <QMargins>
#include <QString>
#include <optional>

class PlainButton;
class QAbstractButton;
class QDialog;
class QLabel;
class QMessageBox;
class QPushButton;
class QWidget;
class SymbolView;

// Small pieces the sheets and the detail pane build their forms from, so the same element
// looks the same everywhere.
class FormParts {
    Q_DECLARE_TR_FUNCTIONS(FormParts)
public:
    // A title (headline, primary colour) over a hint (caption, secondary colour), spacing 4.
    static QWidget* heading(const QString& title, const QString& hint, QWidget* parent);
    // A red "exclamationmark.circle" and a red caption message, spacing 4, 4 px above.
    static QWidget* errorRow(const QString& message, QWidget* parent);
    // A symbol in a fixed colour; an invalid colour means the accent.
    static SymbolView* symbol(const QString& symbolName, int pixelSize, const QColor& color,
                              QWidget* parent);
    // Labels shown as plain text: in the text colour, in the secondary (fainter) text colour,
    // or in a fixed colour. The first two follow the palette when it changes.
    static QLabel* text(const QString& text, const QFont& font, QWidget* parent);
    static QLabel* secondaryText(const QString& text, const QFont& font, QWidget* parent);
    static QLabel* coloredText(const QString& text, const QFont& font, const QColor& color,
                               QWidget* parent);
    // The confirming button: symbol and text in white on the accent fill.
    // The label is padded 12 x 6 in the sheets; the detail pane pads it 0 x 6 with a minimum
    // width of 80.
    static QPushButton* primaryButton(const QString& symbolName, const QString& text,
                                      int iconSpacing, QWidget* parent,
                                      QMargins labelPadding = QMargins(12, 6, 12, 6),
                                      int labelMinimumWidth = 0);
    // The sheets' "Cancel": "xmark.circle.fill" and the text in the secondary colour.
    static PlainButton* cancelButton(QWidget* parent);
    // A window-modal confirmation with a destructive "Delete" and "Cancel" (the default, and
    // Escape). The caller connects to the "Delete" button and calls open().
    static QMessageBox* deleteAlert(const QString& title, const QString& message, QWidget* parent);

    // Whether the store refused a change (the form then says why). A change that was made but
    // could not be saved is not refused: the user is told in a message box, and it stays.
    static bool refused(const std::optional<DataError>& error, QWidget* parent);

    // Ctrl+Return and Ctrl+Enter anywhere in `owner`'s window press `submit` while it is
    // enabled: the forms' way to save or add without leaving the keyboard.
    static void submitOnCtrlReturn(QWidget* owner, QAbstractButton* submit);

    // The band under an add sheet: Cancel (which rejects `sheet`) and a primary "Add" with
    // `toolTip`, right-aligned; Ctrl+Return presses Add.
    struct AddFooter {
        QWidget* band;
        PlainButton* cancel;
        QPushButton* add;
    };
    static AddFooter addFooter(QDialog* sheet, const QString& toolTip);
};
