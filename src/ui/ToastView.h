#pragma once

#include <QWidget>

class QLabel;

// A small confirmation badge: a green "checkmark.circle.fill" and the message, on the window
// background in a rounded rectangle (radius 8) with a soft shadow below.
class ToastView : public QWidget {
    Q_OBJECT
public:
    explicit ToastView(const QString& message, QWidget* parent = nullptr);

    QString message() const;

    // Room around the badge where its shadow is drawn.
    static constexpr int shadowMargin = 8;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_message;
};
