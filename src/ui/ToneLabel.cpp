#include "ToneLabel.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QApplication>
#include <QEvent>

ToneLabel::ToneLabel(const QString& text, Tone tone, QWidget* parent)
    : QLabel(text, parent), m_tone(tone) {
    applyTone();
}

void ToneLabel::applyTone() {
    QPalette pal = QApplication::palette(this);
    pal.setColor(QPalette::WindowText, m_tone == Tone::Secondary ? UiTheme::secondaryLabel(pal)
                                                                 : UiTheme::tertiaryLabel(pal));
    setPalette(pal);
}

void ToneLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange || event->type() == QEvent::ThemeChange)
        applyTone();
    QLabel::changeEvent(event);
}
