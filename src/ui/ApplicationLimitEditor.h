#pragma once

#include "Category.h"

#include <QStringList>
#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QToolButton;

// Under a category's name: where its snippets expand. "Everywhere", "Only in…" or
// "Everywhere except…" some applications, named by window class (as `xprop WM_CLASS` shows
// them), several separated by commas. The classes of the windows open now are offered in a
// menu, read when it opens.
//
// Where the session cannot tell which application has the focus (Wayland), there is nothing to
// offer, and the editor says that a limited category's snippets expand nowhere there.
class ApplicationLimitEditor : public QWidget {
    Q_OBJECT
public:
    // The window classes of the windows open now; empty where the session cannot tell.
    using WindowClasses = std::function<QStringList()>;

    ApplicationLimitEditor(WindowClasses openWindows, QWidget* parent = nullptr);

    Category::Limit limit() const;
    // Shown as given; not a change by the user.
    void setLimit(const Category::Limit& limit);

    QComboBox* kindBox() const { return m_kind; }
    QLineEdit* applicationsField() const { return m_applications; }
    QToolButton* openWindowsButton() const { return m_openWindows; }
    QLabel* note() const { return m_note; }

    // The names in a field's text: split at commas, blanks around them dropped, each once.
    static QStringList names(const QString& text);

signals:
    void edited();

private:
    void fillOpenWindowsMenu();
    void addApplication(const QString& name);
    void updateState();

    WindowClasses m_openWindowClasses;
    QComboBox* m_kind;
    QLineEdit* m_applications;
    QToolButton* m_openWindows;
    QLabel* m_note;
};
