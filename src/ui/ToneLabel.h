#pragma once

#include <QLabel>

// A label whose text is drawn in one of the softer text colours derived from the palette, and
// which follows the palette when the desktop switches between light and dark.
class ToneLabel : public QLabel {
    Q_OBJECT
public:
    enum class Tone { Secondary, Tertiary };

    ToneLabel(const QString& text, Tone tone, QWidget* parent = nullptr);

    Tone tone() const { return m_tone; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyTone();

    Tone m_tone;
};
