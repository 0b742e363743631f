#pragma once

#include <QWidget>

class QHBoxLayout;

// The rounded box the forms put around their text controls: the text background colour,
// corner radius 8 (or as given), a 1 px outline in faint gray, and, while highlighted (the
// field inside is being edited), an accent outline with a soft accent glow just inside it.
class InputFieldFrame : public QWidget {
    Q_OBJECT
public:
    explicit InputFieldFrame(int cornerRadius = 8, int padding = 10, QWidget* parent = nullptr);

    // Children go in this row (spacing 8).
    QHBoxLayout* row() const { return m_row; }

    void setHighlighted(bool highlighted);
    bool isHighlighted() const { return m_highlighted; }
    // The colour of the outline as it is drawn now.
    QColor outlineColor() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* m_row;
    int m_cornerRadius;
    bool m_highlighted = false;
};
