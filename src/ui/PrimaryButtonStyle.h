#pragma once

#include <QMargins>
#include <QProxyStyle>

class QPushButton;

// The look of every confirming button ("Add", "Save"): the label, padded 12 at the sides and
// 4 above and below, on an accent-coloured rounded rectangle (radius 6) in white, drawn at
// 80 % opacity while the button is held down. It draws no separate disabled look: a disabled
// button keeps its colours and simply ignores clicks.
//
// One instance serves every button; apply() installs it and records how the button's own
// label is laid out (its padding, the gap between symbol and text, a minimum width).
class PrimaryButtonStyle : public QProxyStyle {
    Q_OBJECT
public:
    static constexpr int horizontalPadding = 12;
    static constexpr int verticalPadding = 4;
    static constexpr int cornerRadius = 6;
    static constexpr qreal pressedOpacity = 0.8;

    static PrimaryButtonStyle* instance();

    static void apply(QPushButton* button, QMargins labelPadding = {}, int iconSpacing = 6,
                      int labelMinimumWidth = 0);

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;

private:
    PrimaryButtonStyle();
};
