#pragma once

#include <QWidget>

// The thin separator line between columns and between a form's body and its bands.
class Divider : public QWidget {
    Q_OBJECT
public:
    explicit Divider(Qt::Orientation orientation, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
