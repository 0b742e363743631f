#pragma once

#include "ToneLabel.h"

// A short label on a capsule-shaped background, used to mark something as not there yet.
class CapsuleBadge : public ToneLabel {
    Q_OBJECT
public:
    explicit CapsuleBadge(const QString& text, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
