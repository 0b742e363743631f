#include "ToggleSwitch.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QFocusEvent>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int trackWidth = 38;
constexpr int trackHeight = 22;
constexpr int knobInset = 2;
constexpr int focusMargin = 3;
} // namespace

ToggleSwitch::ToggleSwitch(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ToggleSwitch::sizeHint() const {
    // Room around the track for the keyboard-focus ring.
    return {trackWidth + 2 * focusMargin, trackHeight + 2 * focusMargin};
}

bool ToggleSwitch::hitButton(const QPoint& pos) const {
    return rect().contains(pos);
}

void ToggleSwitch::focusInEvent(QFocusEvent* event) {
    m_showFocusRing = event->reason() == Qt::TabFocusReason ||
                      event->reason() == Qt::BacktabFocusReason ||
                      event->reason() == Qt::ShortcutFocusReason;
    QAbstractButton::focusInEvent(event);
}

void ToggleSwitch::focusOutEvent(QFocusEvent* event) {
    m_showFocusRing = false;
    QAbstractButton::focusOutEvent(event);
}

void ToggleSwitch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    const QRectF track(focusMargin, (height() - trackHeight) / 2.0, trackWidth, trackHeight);
    const qreal radius = trackHeight / 2.0;
    const QPalette& pal = palette();
    const bool enabled = isEnabled();

    if (hasFocus() && m_showFocusRing) {
        painter.setPen(QPen(UiTheme::withOpacity(UiTheme::accent(pal), 0.5), 3));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(track.adjusted(-1.5, -1.5, 1.5, 1.5), radius + 1.5, radius + 1.5);
    }

    QColor trackColor =
        isChecked() ? UiTheme::accent(pal) : UiTheme::withOpacity(UiTheme::gray(), 0.35);
    if (!enabled)
        trackColor = UiTheme::withOpacity(trackColor, 0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(trackColor);
    painter.drawRoundedRect(track, radius, radius);

    const qreal knobSize = trackHeight - 2 * knobInset;
    const qreal knobX =
        isChecked() ? track.right() - knobInset - knobSize : track.left() + knobInset;
    const QRectF knob(knobX, track.top() + knobInset, knobSize, knobSize);
    painter.setBrush(QColor(0, 0, 0, 30));
    painter.drawEllipse(knob.translated(0, 0.75));
    painter.setBrush(enabled ? QColor(Qt::white) : QColor(235, 235, 235));
    painter.drawEllipse(knob);
}
