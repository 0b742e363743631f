#include "ContentWindow.h"

#include "ContentView.h"

ContentWindow::ContentWindow(ShortcutDataManager& dataManager, QWidget* parent)
    : QMainWindow(parent), m_contentView(new ContentView(dataManager, this)) {
    setWindowTitle(QStringLiteral("Typolet"));
    setCentralWidget(m_contentView);
    resize(1160, 680);
}
