// The Preferences view: its two cards, their texts and sizes, and the start-at-login switch.

#include "PreferencesView.h"
#include "CapsuleBadge.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "PreferenceCard.h"
#include "RecordingLoginItemBackend.h"
#include "SectionHeader.h"
#include "ShellStyle.h"
#include "TemporarySettings.h"
#include "ToggleSwitch.h"
#include "ToneLabel.h"

#include <QLabel>
#include <QtTest>
#include <memory>

namespace {
// A Preferences view over its own settings file and a recording login-item backend.
struct Fixture {
    TemporarySettings settings;
    LoginPreferences preferences{settings.path()};
    RecordingLoginItemBackend* backend = new RecordingLoginItemBackend;
    LoginItemManager loginItems{std::unique_ptr<LoginItemBackend>(backend)};
    PreferencesView view{loginItems, preferences};

    void show(QWidget* widget = nullptr) {
        widget = widget ? widget : &view;
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
    }
};

QPoint positionIn(const QWidget* widget, const QWidget* ancestor) {
    return widget->mapTo(ancestor, QPoint(0, 0));
}
} // namespace

class PreferencesViewTest : public QObject {
    Q_OBJECT
private slots:
    void cardsShowTheirTextsInOneLayout();
    void switchShowsAndWritesOnlyTheStoredValue();
};

void PreferencesViewTest::cardsShowTheirTextsInOneLayout() {
    Fixture f;
    f.show();
    SectionHeader* general = f.view.generalHeader();
    SectionHeader* sync = f.view.syncHeader();
    QCOMPARE(general->symbolName(), QStringLiteral("gearshape.fill"));
    QCOMPARE(sync->symbolName(), QStringLiteral("arrow.triangle.2.circlepath"));
    for (const SectionHeader* header : {general, sync})
        QVERIFY(!ShellStyle::symbol(header->symbolName()).isNull());
    QCOMPARE(general->badge(), nullptr);
    QVERIFY(sync->badge() != nullptr);

    // Every text but the badge lines up after the card's 20 padding, the 24 icon and 12 spacing.
    const struct {
        const QLabel* label;
        const char* text;
        int pixelSize;
        QFont::Weight weight;
    } texts[] = {
        {general->titleLabel(), "General", 16, QFont::DemiBold},
        {sync->titleLabel(), "Sync", 16, QFont::DemiBold},
        {sync->badge(), "Comming Soon", 9, QFont::Medium},
        {f.view.startAtLoginTitle(), "Start at Login", 14, QFont::Medium},
        {f.view.startAtLoginDetail(), "Automatically start Typolet when you log in", 12,
         QFont::Normal},
        {f.view.syncDetail(),
         "Keep your snippets synchronized and backed up across all your devices. Access them "
         "anywhere, anytime.",
         12, QFont::Normal},
    };
    for (const auto& t : texts) {
        QCOMPARE(t.label->text(), QString::fromUtf8(t.text));
        QCOMPARE(t.label->font().pixelSize(), t.pixelSize);
        QCOMPARE(t.label->font().weight(), t.weight);
        if (t.label != sync->badge())
            QCOMPARE(positionIn(t.label, &f.view).x() + t.label->contentsRect().left(),
                     16 + 20 + 36);
    }
    QCOMPARE(f.view.startAtLoginDetail()->tone(), ToneLabel::Tone::Tertiary);
    QCOMPARE(f.view.syncDetail()->tone(), ToneLabel::Tone::Tertiary);
    QCOMPARE(sync->badge()->tone(), ToneLabel::Tone::Secondary);
    // The explanation is softer than the setting's name, yet still stands off the background.
    const QColor detail = f.view.startAtLoginDetail()->palette().color(QPalette::WindowText);
    QVERIFY(detail != f.view.palette().color(QPalette::WindowText));
    QVERIFY(detail != f.view.palette().color(QPalette::Window));

    // Two cards of one size: 16 around the stack, 12 between; content 20 in and 16 down.
    QCOMPARE(f.view.size(), QSize(432, 16 + 120 + 12 + 120 + 16));
    QCOMPARE(f.view.generalCard()->geometry(), QRect(16, 16, 400, 120));
    QCOMPARE(f.view.syncCard()->geometry(), QRect(16, 16 + 120 + 12, 400, 120));
    QCOMPARE(positionIn(general, f.view.generalCard()), QPoint(20, 16));
    // The badge follows the Sync title; the switch sits at the card's right edge.
    QVERIFY(positionIn(sync->badge(), sync).x() >
            positionIn(sync->titleLabel(), sync).x() + sync->titleLabel()->width());
    ToggleSwitch* toggle = f.view.startAtLoginSwitch();
    QCOMPARE(positionIn(toggle, f.view.generalCard()).x() + toggle->width(), 400 - 20);
    // The sync text is shown whole, however many lines it takes.
    const QLabel* syncDetail = f.view.syncDetail();
    QVERIFY(syncDetail->height() >= syncDetail->heightForWidth(syncDetail->width()));
    QVERIFY(positionIn(syncDetail, f.view.syncCard()).y() + syncDetail->height() <= 120 - 16);
}

void PreferencesViewTest::switchShowsAndWritesOnlyTheStoredValue() {
    Fixture f;
    ToggleSwitch* toggle = f.view.startAtLoginSwitch();
    QVERIFY(!toggle->isChecked() && f.backend->calls.isEmpty());
    f.show(); // the first appearance ever turns it on and registers the login item
    QVERIFY(toggle->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));

    f.backend->calls.clear();
    QTest::mouseClick(toggle, Qt::LeftButton, {}, toggle->rect().center());
    QVERIFY(!toggle->isChecked());
    QCOMPARE(f.settings.read(QStringLiteral("startAtLogin")).toBool(), false);
    toggle->setFocus(Qt::TabFocusReason);
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(toggle->isChecked());
    QVERIFY(f.preferences.startAtLogin());
    f.preferences.setStartAtLogin(false); // changed elsewhere: the switch follows
    QVERIFY(!toggle->isChecked());

    // The next run shows the stored value and leaves it as it is.
    LoginPreferences nextRun(f.settings.path());
    PreferencesView again(f.loginItems, nextRun);
    f.show(&again);
    QVERIFY(!again.startAtLoginSwitch()->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>());
}

TYPOLET_ISOLATED_TEST_MAIN(PreferencesViewTest)
#include "PreferencesViewTest.moc"
