#pragma once

#include <QUrl>
#include <QWidget>

class QLabel;

// The content of the About window: the application icon, the name, the version and a link to
// the product website, stacked and centred.
class AboutView : public QWidget {
    Q_OBJECT
public:
    // `version` is the text shown after "Version "; the default is the version Typolet was
    // built as. An empty version shows as "1.0".
    explicit AboutView(QWidget* parent = nullptr);
    AboutView(const QString& version, QWidget* parent);

    QLabel* iconLabel() const { return m_icon; }
    QLabel* nameLabel() const { return m_name; }
    QLabel* versionLabel() const { return m_version; }
    QLabel* websiteLabel() const { return m_website; }

    // The version number this build carries (from the build system's project version).
    static QString compiledVersion();
    // What is shown for a version value: the value itself, or "1.0" when it is empty.
    static QString displayedVersion(const QString& version);

    static QUrl websiteUrl();
    static QString websiteName();

    static constexpr int viewWidth = 240;
    static constexpr int viewHeight = 220;
    static constexpr int iconSize = 64;

private:
    QLabel* m_icon = nullptr;
    QLabel* m_name = nullptr;
    QLabel* m_version = nullptr;
    QLabel* m_website = nullptr;
};
