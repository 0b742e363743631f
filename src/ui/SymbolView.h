#pragma once

#include <QColor>
#include <QWidget>

// One symbol, drawn at paint time so it follows the palette (light or dark, the accent the
// desktop chose) and the screen's pixel density.
class SymbolView : public QWidget {
    Q_OBJECT
public:
    SymbolView(const QString& symbolName, int pixelSize, QWidget* parent = nullptr);

    QString symbol() const { return m_symbol; }
    // A fixed colour; an invalid colour means the palette's accent.
    void setColor(const QColor& color);
    QColor color() const;

    QSize sizeHint() const override { return QSize(m_size, m_size); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_symbol;
    int m_size;
    QColor m_color;
};
