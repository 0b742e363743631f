#pragma once

#include <QAbstractButton>

// An on/off switch: a rounded track, filled with the accent colour when on, with a round knob
// that sits on the right when on and on the left when off. Space and a click toggle it.
class ToggleSwitch : public QAbstractButton {
    Q_OBJECT
public:
    explicit ToggleSwitch(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    // The focus ring shows only when the focus came from the keyboard, not when the window
    // simply gave its first control the focus or the switch was clicked.
    bool m_showFocusRing = false;
};
