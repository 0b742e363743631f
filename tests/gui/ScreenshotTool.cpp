// Renders the editor with sample data into PNG files, in a light and a dark palette:
// the main window, each sheet, the detail pane with its toast, and a window of awkward input
// (very long texts, right-to-left text, emoji, a name of spaces).
//
//   typolet_screenshots OUTPUT_DIR
#include "AddCategoryView.h"
#include "AddShortcutView.h"
#include "CategoryRowView.h"
#include "ContentView.h"
#include "ContentWindow.h"
#include "CustomTextEditor.h"
#include "EditCategoryView.h"
#include "FocusableTextField.h"
#include "ShortcutDataManager.h"
#include "ShortcutDetailView.h"
#include "TemporarySettings.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStyleFactory>
#include <QTest>

namespace {
void settle(int ms = 450) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::qWait(10);
    }
}

void save(QWidget* widget, const QString& dir, const QString& name) {
    settle();
    const QString path = QDir(dir).filePath(name + QStringLiteral(".png"));
    if (!widget->grab().save(path))
        qFatal("could not write %s", qPrintable(path));
    qInfo("wrote %s", qPrintable(path));
}

QPalette darkPalette() {
    QPalette p;
    const QColor window(0x2B, 0x2B, 0x2E), base(0x1E, 0x1E, 0x20), text(0xEC, 0xEC, 0xEE);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x3A, 0x3A, 0x3D));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, QColor(0x2F, 0x7C, 0xF6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::PlaceholderText, QColor(0x8E, 0x8E, 0x93));
    p.setColor(QPalette::ToolTipBase, window);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::Light, QColor(0x4A, 0x4A, 0x4D));
    p.setColor(QPalette::Mid, QColor(0x3A, 0x3A, 0x3D));
    p.setColor(QPalette::Dark, QColor(0x18, 0x18, 0x1A));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(0x77, 0x77, 0x7B));
    return p;
}

QPalette lightPalette() {
    QPalette p = QStyleFactory::create(QStringLiteral("Fusion"))->standardPalette();
    p.setColor(QPalette::Highlight, QColor(0x1F, 0x6F, 0xEB));
    p.setColor(QPalette::HighlightedText, Qt::white);
    return p;
}

void fillSampleData(ShortcutDataManager& store) {
    (void)store.addCategory(QStringLiteral("Work"));
    (void)store.addCategory(QStringLiteral("Personal"));
    (void)store.addCategory(QStringLiteral("Code"));
    const QUuid work = store.categories().at(1)->id();
    const QUuid personal = store.categories().at(2)->id();
    const QUuid code = store.categories().at(3)->id();
    const QUuid none = Category::defaultCategoryId;
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";addr"), QStringLiteral("221B Baker Street\nLondon NW1 6XE"), personal));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";sig"),
        QStringLiteral("Best regards,\nAda Lovelace\nAnalytical Engines Ltd."), work));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";mtg"),
        QStringLiteral("Could we meet on Thursday at 10:00 to go through the quarterly numbers?"),
        work));
    store.appendShortcut(Shortcut::create(QStringLiteral(";thx"),
                                          QStringLiteral("Thank you for your quick reply!"), work));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";ooo"),
        QStringLiteral("I am out of the office until Monday and will reply when I am back."),
        work));
    store.appendShortcut(
        Shortcut::create(QStringLiteral(";mail"), QStringLiteral("ada@example.org"), personal));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";main"),
        QStringLiteral("int main(int argc, char** argv) {\n    return 0;\n}"), code));
    store.appendShortcut(
        Shortcut::create(QStringLiteral(";shrug"), QStringLiteral("¯\\_(ツ)_/¯"), none));
    store.saveShortcuts();
}

void renderAll(const QString& dir, const QString& prefix) {
    const auto name = [&](const char* n) { return prefix + QLatin1String(n); };
    TemporarySettings settings;
    ShortcutDataManager store(settings.path());
    fillSampleData(store);

    ContentWindow window(store);
    window.show();
    settle();
    ContentView* view = window.contentView();
    view->setSelectedShortcut(store.shortcuts().at(1)); // ";sig" in Work
    save(&window, dir, name("main-window"));

    // Detail pane right after a save: the toast is up.
    view->detailView()->commandField()->setText(QStringLiteral(";sign"));
    view->detailView()->save();
    save(view->detailView(), dir, name("detail-toast"));

    // Add snippet: empty, then with the duplicate message.
    view->showAddSheet();
    settle();
    save(view->addSheet(), dir, name("add-snippet-empty"));
    QTest::keyClicks(view->addSheet()->commandField(), QStringLiteral(";thx"));
    view->addSheet()->contentEditor()->setFocus();
    QTest::keyClicks(view->addSheet()->contentEditor(), QStringLiteral("Thanks a lot!"));
    view->addSheet()->addButton()->click();
    save(view->addSheet(), dir, name("add-snippet-duplicate"));
    view->addSheet()->reject();
    settle(100);

    // Add category with the field highlighted, and the duplicate message.
    view->showAddCategorySheet();
    settle();
    QTest::keyClicks(view->addCategorySheet()->nameField(), QStringLiteral("work"));
    view->addCategorySheet()->addButton()->click();
    save(view->addCategorySheet(), dir, name("add-category"));
    view->addCategorySheet()->reject();
    settle(100);

    // Edit category.
    CategoryRowView* row = view->categoryRow(store.categories().at(1)->id());
    row->showEditSheet();
    settle();
    row->editSheet()->nameField()->setText(QStringLiteral("Work projects"));
    save(row->editSheet(), dir, name("edit-category"));
    row->editSheet()->reject();
    settle(100);

    // Delete confirmation for a category.
    row = view->categoryRow(store.categories().at(1)->id());
    row->showDeleteAlert();
    save(row->deleteAlert(), dir, name("delete-category-alert"));
    row->deleteAlert()->reject();
    settle(100);

    // Delete confirmation for a snippet.
    view->requestDelete(store.shortcuts().at(0).id);
    settle();
    save(view->deleteAlert(), dir, name("delete-alert"));
    view->deleteAlert()->reject();
    settle(100);

    // Awkward input.
    (void)store.addCategory(QStringLiteral("   "));
    (void)store.addCategory(QString(300, QChar(u'W')));
    (void)store.addCategory(QStringLiteral("עבודה 🚀"));
    const QUuid rtl = store.categories().last()->id();
    store.appendShortcut(
        Shortcut::create(QString(100000, QChar(u'x')), QString(100000, QChar(u'y')), rtl));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";שלום"),
        QStringLiteral(
            "שלום עולם! مرحبا بالعالم 👋🏽👨‍👩‍👧‍👦"),
        rtl));
    store.appendShortcut(Shortcut::create(
        QStringLiteral(";emoji"),
        QStringLiteral("🎉🎉🎉 party 🥳 ") + QString(2000, QChar(u'z')), rtl));
    store.saveShortcuts();
    view->setSearchText({});
    view->setSelectedShortcut(store.shortcuts().at(store.shortcuts().size() - 3));
    save(&window, dir, name("bad-input"));
}
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots");
    QDir().mkpath(dir);

    QApplication::setPalette(lightPalette());
    renderAll(dir, QStringLiteral("light-"));
    QApplication::setPalette(darkPalette());
    renderAll(dir, QStringLiteral("dark-"));
    return 0;
}
