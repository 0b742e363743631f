#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QMargins>

// A button without bezel or background: a symbol and/or a text drawn in one colour. Used for
// "Add Category", "Add Snippet", "Cancel", "Delete" and the small edit and delete symbols of
// the category rows. It dims while pressed and when disabled.
class PlainButton : public QAbstractButton {
    Q_OBJECT
public:
    PlainButton(const QString& symbolName, const QString& text, QWidget* parent = nullptr);

    void setSymbol(const QString& symbolName);
    QString symbol() const { return m_symbol; }
    void setSymbolSize(int pixelSize);
    void setSpacing(int spacing);
    void setPadding(QMargins padding);
    // The colour of symbol and text: a fixed colour, or else a palette role (the accent, the
    // palette's highlight, unless another role is set).
    void setColor(const QColor& color);
    void setColorRole(QPalette::ColorRole role);
    QColor color() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_symbol;
    int m_symbolSize = 16;
    int m_spacing = 4;
    QMargins m_padding;
    QColor m_color;
    QPalette::ColorRole m_colorRole = QPalette::Highlight;
};
