#pragma once

#include <QWidget>

class QVBoxLayout;

// One rounded card of the Preferences window: a panel 400 wide and at least 120 high, slightly lifted by a
// soft shadow and outlined by a faint border. Its content goes into contentLayout().
class PreferenceCard : public QWidget {
    Q_OBJECT
public:
    explicit PreferenceCard(QWidget* parent = nullptr);

    QVBoxLayout* contentLayout() const { return m_layout; }

    static constexpr int cardWidth = 400;
    static constexpr int cardHeight = 120;
    static constexpr int cornerRadius = 12;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVBoxLayout* m_layout = nullptr;
};
