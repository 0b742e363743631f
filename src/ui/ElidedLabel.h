#pragma once

#include <QWidget>

// One line of text shown verbatim, cut with an ellipsis when it does not fit, so a very long
// name or command never widens its column. Line breaks in the text show as spaces.
class ElidedLabel : public QWidget {
    Q_OBJECT
public:
    explicit ElidedLabel(const QString& text = {}, QWidget* parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString& text);
    void setColor(const QColor& color);

    // `text` as one line (line breaks and tabs as spaces), cut after `limit` characters with
    // an ellipsis: what a one-line label can show, cheap to measure however long the text.
    static QString oneLine(const QString& text, qsizetype limit = 400);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    QString m_shown; // the text as one line, cut to a length that can be measured quickly
    QColor m_color;
};
