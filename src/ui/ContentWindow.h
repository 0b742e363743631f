#pragma once

#include <QMainWindow>

class ContentView;
class ShortcutDataManager;

// A plain window around ContentView, for trying the editor on its own (screenshots, tests).
// The application builds its own main window with menus around the same view.
class ContentWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit ContentWindow(ShortcutDataManager& dataManager, QWidget* parent = nullptr);

    ContentView* contentView() const { return m_contentView; }

private:
    ContentView* m_contentView;
};
