#pragma once

#include <QFrame>

class QLabel;

// A short confirmation that floats over a pane for a moment: the desktop's "ok" icon and the
// message, in the palette's tooltip colours so it stands apart from the pane in any palette.
class ToastView : public QFrame {
    Q_OBJECT
public:
    explicit ToastView(const QString& message, QWidget* parent = nullptr);

    QString message() const;

private:
    QLabel* m_message;
};
