#include "ToastView.h"

#include "SymbolImage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

ToastView::ToastView(const QString& message, QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("toast"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    auto* row = new QHBoxLayout(this);
    auto* icon = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(SymbolImage::icon(QStringLiteral("dialog-ok")).pixmap(size, size));
    row->addWidget(icon);
    m_message = new QLabel(message, this);
    m_message->setForegroundRole(QPalette::ToolTipText);
    row->addWidget(m_message);
    adjustSize();
}

QString ToastView::message() const {
    return m_message->text();
}
