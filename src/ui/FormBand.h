#pragma once

#include <QWidget>

// The header and footer bands of the forms: the window background at half opacity, which
// sets them slightly apart from the body.
class FormBand : public QWidget {
    Q_OBJECT
public:
    explicit FormBand(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
