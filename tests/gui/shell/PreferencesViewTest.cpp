// The Preferences view: its two cards, their texts and sizes, and the start-at-login switch
// with its first-appearance default.

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

    void show() {
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
    }
};

QPoint positionIn(const QWidget* widget, const QWidget* ancestor) {
    return widget->mapTo(ancestor, QPoint(0, 0));
}
} // namespace

class PreferencesViewTest : public QObject {
    Q_OBJECT
private slots:
    void showsBothCardsWithTheirTexts();
    void cardsHaveOneFixedSize();
    void textsLineUpWithTheTitles();
    void firstAppearanceTurnsTheSwitchOn();
    void switchingOffIsStoredAndMakesNoLoginItemCall();
    void laterAppearanceKeepsTheSwitchOff();
    void spaceTogglesTheSwitch();
    void switchFollowsTheStoredValue();
};

void PreferencesViewTest::showsBothCardsWithTheirTexts() {
    Fixture f;
    f.show();
    QCOMPARE(f.view.generalHeader()->titleLabel()->text(), QStringLiteral("General"));
    QCOMPARE(f.view.generalHeader()->symbolName(), QStringLiteral("gearshape.fill"));
    QCOMPARE(f.view.generalHeader()->badge(), nullptr);
    QCOMPARE(f.view.syncHeader()->titleLabel()->text(), QStringLiteral("Sync"));
    QCOMPARE(f.view.syncHeader()->symbolName(), QStringLiteral("arrow.triangle.2.circlepath"));
    QVERIFY(f.view.syncHeader()->badge() != nullptr);
    QCOMPARE(f.view.syncHeader()->badge()->text(), QStringLiteral("Comming Soon"));
    QCOMPARE(f.view.startAtLoginTitle()->text(), QStringLiteral("Start at Login"));
    QCOMPARE(f.view.startAtLoginDetail()->text(),
             QStringLiteral("Automatically start Typolet when you log in"));
    QCOMPARE(f.view.syncDetail()->text(),
             QStringLiteral("Keep your snippets synchronized and backed up across all your "
                            "devices. Access them anywhere, anytime."));
    QVERIFY(!ShellStyle::symbol(f.view.generalHeader()->symbolName()).isNull());
    QVERIFY(!ShellStyle::symbol(f.view.syncHeader()->symbolName()).isNull());

    // Sizes and weights of the texts.
    QCOMPARE(f.view.generalHeader()->titleLabel()->font().pixelSize(), 16);
    QCOMPARE(f.view.generalHeader()->titleLabel()->font().weight(), QFont::DemiBold);
    QCOMPARE(f.view.startAtLoginTitle()->font().pixelSize(), 14);
    QCOMPARE(f.view.startAtLoginTitle()->font().weight(), QFont::Medium);
    QCOMPARE(f.view.startAtLoginDetail()->font().pixelSize(), 12);
    QCOMPARE(f.view.syncDetail()->font().pixelSize(), 12);
    QCOMPARE(f.view.syncHeader()->badge()->font().pixelSize(), 9);
    QCOMPARE(f.view.syncHeader()->badge()->font().weight(), QFont::Medium);
    QCOMPARE(f.view.startAtLoginDetail()->tone(), ToneLabel::Tone::Tertiary);
    QCOMPARE(f.view.syncDetail()->tone(), ToneLabel::Tone::Tertiary);
    QCOMPARE(f.view.syncHeader()->badge()->tone(), ToneLabel::Tone::Secondary);
    // The explanatory text is softer than the setting's name, yet a different colour from
    // the background.
    const QPalette pal = f.view.palette();
    const QColor detail = f.view.startAtLoginDetail()->palette().color(QPalette::WindowText);
    QVERIFY(detail != pal.color(QPalette::WindowText));
    QVERIFY(detail != pal.color(QPalette::Window));
}

void PreferencesViewTest::cardsHaveOneFixedSize() {
    Fixture f;
    f.show();
    QCOMPARE(f.view.width(), 432);
    QCOMPARE(f.view.generalCard()->size(), QSize(400, 120));
    QCOMPARE(f.view.syncCard()->size(), QSize(400, 120));
    // 16 around the stack, 12 between the cards.
    QCOMPARE(f.view.generalCard()->pos(), QPoint(16, 16));
    QCOMPARE(f.view.syncCard()->pos(), QPoint(16, 16 + 120 + 12));
    QCOMPARE(f.view.height(), 16 + 120 + 12 + 120 + 16);
}

void PreferencesViewTest::textsLineUpWithTheTitles() {
    Fixture f;
    f.show();
    PreferenceCard* general = f.view.generalCard();
    PreferenceCard* sync = f.view.syncCard();
    // Content starts 20 in and 16 down; header titles after the 24 icon and 12 spacing.
    QCOMPARE(positionIn(f.view.generalHeader(), general), QPoint(20, 16));
    QCOMPARE(positionIn(f.view.generalHeader()->titleLabel(), general).x(), 20 + 36);
    QCOMPARE(positionIn(f.view.syncHeader()->titleLabel(), sync).x(), 20 + 36);
    QCOMPARE(positionIn(f.view.startAtLoginTitle(), general).x(), 20 + 36);
    QCOMPARE(positionIn(f.view.startAtLoginDetail(), general).x(), 20 + 36);
    const QWidget* syncDetail = f.view.syncDetail();
    QCOMPARE(positionIn(syncDetail, sync).x() + syncDetail->contentsRect().left(), 20 + 36);
    // The badge follows the Sync title; the switch sits at the card's right edge.
    QVERIFY(positionIn(f.view.syncHeader()->badge(), sync).x() >
            positionIn(f.view.syncHeader()->titleLabel(), sync).x() +
                f.view.syncHeader()->titleLabel()->width());
    const QRect switchRect(positionIn(f.view.startAtLoginSwitch(), general),
                           f.view.startAtLoginSwitch()->size());
    QCOMPARE(switchRect.right() + 1, 400 - 20);
    // The sync text is shown whole, however many lines it takes.
    QVERIFY(syncDetail->height() >= syncDetail->heightForWidth(syncDetail->width()));
    QVERIFY(positionIn(syncDetail, sync).y() + syncDetail->height() <= 120 - 16);
}

void PreferencesViewTest::firstAppearanceTurnsTheSwitchOn() {
    Fixture f;
    QVERIFY(!f.view.startAtLoginSwitch()->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>());
    f.show();
    QVERIFY(f.view.startAtLoginSwitch()->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));
    QCOMPARE(f.settings.read(QStringLiteral("startAtLogin")).toBool(), true);
    QCOMPARE(f.settings.read(QStringLiteral("hasLaunchedBefore")).toBool(), true);

    // Hidden and shown again: no more calls, still on.
    f.view.hide();
    f.show();
    QVERIFY(f.view.startAtLoginSwitch()->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));
}

void PreferencesViewTest::switchingOffIsStoredAndMakesNoLoginItemCall() {
    Fixture f;
    f.show();
    f.backend->calls.clear();
    ToggleSwitch* toggle = f.view.startAtLoginSwitch();
    QTest::mouseClick(toggle, Qt::LeftButton, {}, toggle->rect().center());
    QVERIFY(!toggle->isChecked());
    QCOMPARE(f.settings.read(QStringLiteral("startAtLogin")).toBool(), false);
    QCOMPARE(f.backend->calls, QList<bool>());
    // A new run of the program reads it back.
    LoginPreferences again(f.settings.path());
    QVERIFY(!again.startAtLogin());
}

void PreferencesViewTest::laterAppearanceKeepsTheSwitchOff() {
    TemporarySettings settings;
    settings.write(QStringLiteral("hasLaunchedBefore"), true);
    settings.write(QStringLiteral("startAtLogin"), false);
    LoginPreferences preferences(settings.path());
    auto* backend = new RecordingLoginItemBackend;
    LoginItemManager loginItems{std::unique_ptr<LoginItemBackend>(backend)};
    PreferencesView view(loginItems, preferences);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(!view.startAtLoginSwitch()->isChecked());
    QCOMPARE(backend->calls, QList<bool>());
    QCOMPARE(settings.read(QStringLiteral("startAtLogin")).toBool(), false);
}

void PreferencesViewTest::spaceTogglesTheSwitch() {
    Fixture f;
    f.show();
    ToggleSwitch* toggle = f.view.startAtLoginSwitch();
    toggle->setFocus(Qt::TabFocusReason);
    QVERIFY(toggle->isChecked());
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(!toggle->isChecked());
    QVERIFY(!f.preferences.startAtLogin());
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(toggle->isChecked());
    QVERIFY(f.preferences.startAtLogin());
}

void PreferencesViewTest::switchFollowsTheStoredValue() {
    Fixture f;
    f.show();
    QVERIFY(f.view.startAtLoginSwitch()->isChecked());
    f.preferences.setStartAtLogin(false);
    QVERIFY(!f.view.startAtLoginSwitch()->isChecked());
    f.preferences.setStartAtLogin(true);
    QVERIFY(f.view.startAtLoginSwitch()->isChecked());
}

TYPOLET_ISOLATED_TEST_MAIN(PreferencesViewTest)
#include "PreferencesViewTest.moc"
