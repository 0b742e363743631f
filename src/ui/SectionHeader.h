#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;
class CapsuleBadge;

// The heading of a Preferences card: a small accent-coloured symbol on a tinted circle, the
// section's title and, optionally, a badge after the title.
class SectionHeader : public QWidget {
    Q_OBJECT
public:
    SectionHeader(const QString& symbolName, const QString& title, const QString& badge = {},
                  QWidget* parent = nullptr);

    QLabel* titleLabel() const { return m_title; }
    CapsuleBadge* badge() const { return m_badge; }
    QString symbolName() const { return m_symbolName; }

    static constexpr int iconSize = 24;
    static constexpr int spacing = 12;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_symbolName;
    QIcon m_icon;
    QLabel* m_title = nullptr;
    CapsuleBadge* m_badge = nullptr;
};
