#pragma once

#include <QWidget>

class Autostart;
class AutostartPreferences;
class PreferenceCard;
class QLabel;
class SectionHeader;
class ToggleSwitch;
class ToneLabel;

// The content of the Preferences window: a "General" card with the start-at-login switch and
// a "Sync" card announcing a feature that is not there yet.
//
// The switch shows and writes the stored startAtLogin preference and nothing else. Each time
// the view appears it gives Autostart the chance to apply the first-appearance default
// (switch on, login item registered), which has an effect only the very first time.
class PreferencesView : public QWidget {
    Q_OBJECT
public:
    PreferencesView(Autostart& autostart, AutostartPreferences& preferences,
                    QWidget* parent = nullptr);

    ToggleSwitch* startAtLoginSwitch() const { return m_switch; }
    PreferenceCard* generalCard() const { return m_generalCard; }
    PreferenceCard* syncCard() const { return m_syncCard; }
    SectionHeader* generalHeader() const { return m_generalHeader; }
    SectionHeader* syncHeader() const { return m_syncHeader; }
    QLabel* startAtLoginTitle() const { return m_switchTitle; }
    ToneLabel* startAtLoginDetail() const { return m_switchDetail; }
    ToneLabel* syncDetail() const { return m_syncDetail; }

    static constexpr int viewWidth = 432;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildGeneralCard();
    void buildSyncCard();

    Autostart& m_autostart;
    AutostartPreferences& m_preferences;
    PreferenceCard* m_generalCard = nullptr;
    PreferenceCard* m_syncCard = nullptr;
    SectionHeader* m_generalHeader = nullptr;
    SectionHeader* m_syncHeader = nullptr;
    ToggleSwitch* m_switch = nullptr;
    QLabel* m_switchTitle = nullptr;
    ToneLabel* m_switchDetail = nullptr;
    ToneLabel* m_syncDetail = nullptr;
};
