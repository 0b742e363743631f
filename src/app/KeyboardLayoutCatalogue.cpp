#include "KeyboardLayoutCatalogue.h"

#include <QCollator>
#include <QFile>
#include <QXmlStreamReader>

namespace {
// The name and description of the <configItem> the reader is in.
KeyboardLayoutCatalogue::Entry readConfigItem(QXmlStreamReader& xml) {
    KeyboardLayoutCatalogue::Entry entry;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"name")
            entry.name = xml.readElementText();
        else if (xml.name() == u"description")
            entry.description = xml.readElementText();
        else
            xml.skipCurrentElement();
    }
    return entry;
}
} // namespace

QList<KeyboardLayoutCatalogue::Entry> KeyboardLayoutCatalogue::read(const QString& rulesFile) {
    QList<Entry> entries;
    QFile file(rulesFile);
    if (!file.open(QIODevice::ReadOnly))
        return entries;
    QXmlStreamReader xml(&file);
    QString layout;
    // <layoutList><layout><configItem/><variantList><variant><configItem/>...
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == u"layout") {
            layout.clear();
        } else if (xml.name() == u"configItem") {
            const bool inVariant = !layout.isEmpty();
            Entry entry = readConfigItem(xml);
            if (entry.name.isEmpty() || entry.description.isEmpty())
                continue;
            if (inVariant)
                entry.name = layout + u'(' + entry.name + u')';
            else
                layout = entry.name;
            entries.append(entry);
        } else if (xml.name() == u"modelList" || xml.name() == u"optionList") {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError())
        return {};
    QCollator collator;
    std::stable_sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
        return collator.compare(a.description, b.description) < 0;
    });
    return entries;
}
