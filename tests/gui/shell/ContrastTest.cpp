// Every text of the editor, its forms and Preferences reads well in a light and in a dark
// palette: each is measured in the rendered pixels against the background it sits on.
#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "CategoryRowView.h"
#include "EditCategoryDialog.h"
#include "CustomTextEditor.h"
#include "Autostart.h"
#include "GuiTestSupport.h"
#include "IsolatedTestMain.h"
#include "Preferences.h"
#include "PreferencesView.h"
#include "RecordingAutostartBackend.h"
#include "SnippetDetailView.h"
#include "SnippetForm.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QListView>
#include <QPlainTextEdit>
#include <QStyleFactory>
#include <QtTest>
#include <cmath>

namespace {
double luminance(QRgb rgb) {
    const auto channel = [](int value) {
        const double c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(qRed(rgb)) + 0.7152 * channel(qGreen(rgb)) +
           0.0722 * channel(qBlue(rgb));
}

double contrast(QRgb a, QRgb b) {
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

// The contrast of the text drawn in `area` of `image`: the commonest colour there is the
// background, and the glyphs' cores are the pixels that differ from it the most.
double textContrast(const QImage& image, const QRect& area) {
    QHash<QRgb, int> counts;
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++counts[image.pixel(x, y) | 0xff000000];
    QRgb background = 0;
    int most = -1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        if (it.value() > most)
            most = it.value(), background = it.key();
    double best = 1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        best = std::max(best, contrast(background, it.key()));
    return best;
}

QPalette darkPalette() {
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::WindowText, QColor(0xee, 0xee, 0xee));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::AlternateBase, QColor(0x35, 0x35, 0x35));
    dark.setColor(QPalette::Text, QColor(0xee, 0xee, 0xee));
    dark.setColor(QPalette::Button, QColor(0x3a, 0x3a, 0x3a));
    dark.setColor(QPalette::ButtonText, QColor(0xee, 0xee, 0xee));
    dark.setColor(QPalette::Highlight, QColor(0x3d, 0xae, 0xe9));
    dark.setColor(QPalette::HighlightedText, QColor(0x10, 0x10, 0x10));
    dark.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9a, 0x9a));
    dark.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x3a));
    dark.setColor(QPalette::ToolTipText, QColor(0xee, 0xee, 0xee));
    dark.setColor(QPalette::Link, QColor(0x5c, 0xb8, 0xf0));
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(0x80, 0x80, 0x80));
    dark.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x80, 0x80, 0x80));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x80, 0x80, 0x80));
    return dark;
}

// Texts under `window` that measure below what they need: "what it says: ratio".
QStringList faintTexts(QWidget* window) {
    QTest::qWait(1); // lets pending layouts settle before the picture
    const QImage image = window->grab().toImage();
    QStringList faint;
    const auto measure = [&](const QWidget* widget, const QRect& local, const QString& what,
                             double needed) {
        const QRect area(widget->mapTo(window, local.topLeft()), local.size());
        const double ratio = textContrast(image, area);
        if (ratio < needed)
            faint << QStringLiteral("%1: %2").arg(what).arg(ratio, 0, 'f', 2);
    };
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        // Inactive controls are exempt; hidden ones are not on screen.
        if (!widget->isVisibleTo(window) || !widget->isEnabled() || widget->width() < 4)
            continue;
        if (auto* label = qobject_cast<QLabel*>(widget); label && !label->text().isEmpty())
            measure(label, label->contentsRect(), label->text().left(30), 4.5);
        else if (auto* button = qobject_cast<QAbstractButton*>(widget);
                 button && !button->text().isEmpty())
            measure(button, button->rect().adjusted(2, 2, -2, -2), button->text(), 4.5);
        else if (auto* field = qobject_cast<QLineEdit*>(widget))
            measure(field, field->rect().adjusted(4, 4, -4, -4),
                    field->text().isEmpty() ? field->placeholderText() : field->text(),
                    field->text().isEmpty() ? 3.0 : 4.5);
        else if (auto* editor = qobject_cast<QPlainTextEdit*>(widget))
            measure(editor->viewport(), editor->viewport()->rect().adjusted(2, 2, -2, -2),
                    editor->document()->isEmpty() ? editor->placeholderText()
                                                  : editor->toPlainText().left(30),
                    editor->document()->isEmpty() ? 3.0 : 4.5);
        else if (auto* list = qobject_cast<QListView*>(widget)) {
            // Each painted row: its title line and the line under it.
            for (int row = 0; row < list->model()->rowCount(); ++row) {
                const QModelIndex index = list->model()->index(row, 0);
                if (list->indexWidget(index))
                    continue; // a widget of its own, measured as such
                const QRect rect = list->visualRect(index);
                const QRect top(rect.left() + 12, rect.top() + 4, rect.width() / 2,
                                rect.height() / 2 - 4);
                const QRect bottom(top.left(), rect.center().y(), top.width(),
                                   rect.height() / 2 - 4);
                for (const QRect& line : {top, bottom})
                    measure(list->viewport(), line, index.data().toString(), 4.5);
            }
        }
    }
    return faint;
}
} // namespace

class ContrastTest : public QObject {
    Q_OBJECT
private slots:
    void everyTextReadsWell_data() {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void everyTextReadsWell() {
        QFETCH(bool, dark);
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());

        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addSnippet(QStringLiteral(";addr"), QStringLiteral("221B Baker Street"), work.id);
        fixture.addSnippet(QStringLiteral(";sig"), QStringLiteral("Best regards"), work.id);
        ContentView* view = fixture.show(work);
        GuiInput::clickRow(view->snippetList(), 1);
        view->setSearchText(QStringLiteral("a")); // "1 more in other categories" shows nowhere
        QCOMPARE(faintTexts(view).join(QLatin1String("; ")), QString());
        view->setSearchText(QString());

        AddSnippetDialog* dialog =
            GuiInput::openDialog(view->addSnippetButton(), [view] { return view->addSnippetDialog(); });
        QVERIFY(dialog);
        QCOMPARE(faintTexts(dialog).join(QLatin1String("; ")), QString());
        QTest::keyClicks(dialog->form()->commandField(), QStringLiteral(";si")); // the clash warning
        QTest::keyClicks(dialog->form()->contentEditor(), QStringLiteral("x"));
        QCOMPARE(faintTexts(dialog).join(QLatin1String("; ")), QString());
        QTest::keyClicks(dialog->form()->commandField(), QStringLiteral("g"));
        GuiInput::click(dialog->submitButton()); // the duplicate error
        QCOMPARE(faintTexts(dialog).join(QLatin1String("; ")), QString());
        dialog->reject();

        AddCategoryDialog* categoryDialog = GuiInput::openDialog(
            view->addCategoryButton(), [view] { return view->addCategoryDialog(); });
        QVERIFY(categoryDialog);
        QCOMPARE(faintTexts(categoryDialog).join(QLatin1String("; ")), QString());
        QTest::keyClicks(categoryDialog->nameField(), QStringLiteral("work"));
        GuiInput::click(categoryDialog->submitButton()); // the duplicate error
        QCOMPARE(faintTexts(categoryDialog).join(QLatin1String("; ")), QString());
        categoryDialog->reject();

        CategoryRowView* row = view->categoryRow(work.id);
        EditCategoryDialog* renaming =
            GuiInput::openDialog(row->editButton(), [row] { return row->editDialog(); });
        QVERIFY(renaming);
        QCOMPARE(faintTexts(renaming).join(QLatin1String("; ")), QString());
        renaming->reject();

        Preferences preferences(fixture.settings().path());
        Autostart autostart(std::make_unique<RecordingAutostartBackend>());
        PreferencesView preferencesView(autostart, preferences);
        preferencesView.show();
        QVERIFY(QTest::qWaitForWindowExposed(&preferencesView));
        QCOMPARE(faintTexts(&preferencesView).join(QLatin1String("; ")), QString());
    }
};

TYPOLET_ISOLATED_TEST_MAIN(ContrastTest)
#include "ContrastTest.moc"
