#include "PlaceholderText.h"

namespace {
const QString opening = QStringLiteral("{{");
const QString closing = QStringLiteral("}}");

// Where the line that `from` is on ends: a placeholder never reaches over a line break.
qsizetype lineEnd(const QString& content, qsizetype from) {
    for (qsizetype i = from; i < content.size(); ++i)
        if (content.at(i) == u'\n' || content.at(i) == u'\r')
            return i;
    return content.size();
}

// A choice's values: split at each | that no backslash escapes; \| and \\ are literal.
// Empty values offer nothing to choose and are left out.
QStringList choices(QStringView written) {
    QStringList values{QString()};
    for (qsizetype i = 0; i < written.size(); ++i) {
        const QChar c = written.at(i);
        if (c == u'\\' && i + 1 < written.size() &&
            (written.at(i + 1) == u'|' || written.at(i + 1) == u'\\')) {
            values.last().append(written.at(++i));
        } else if (c == u'|') {
            values.append(QString());
        } else {
            values.last().append(c);
        }
    }
    values.removeAll(QString());
    return values;
}
} // namespace

PlaceholderText::PlaceholderText(const QString& content) {
    parse(content);
}

void PlaceholderText::appendLiteral(QStringView text) {
    if (text.isEmpty())
        return;
    if (m_parts.isEmpty() || m_parts.last().kind != Kind::Literal)
        m_parts.append(Part{Kind::Literal, {}, {}, {}});
    m_parts.last().text += text;
}

void PlaceholderText::add(Kind kind, const QString& text) {
    m_parts.append(Part{kind, text, {}, {}});
}

void PlaceholderText::parse(const QString& content) {
    const QStringView view(content);
    // After {{{{ the next }} belongs to the braces written literally, so it is no stray.
    bool escapeOpen = false;
    qsizetype i = 0;
    while (i < content.size()) {
        // Plain text up to the next brace goes in one piece.
        qsizetype next = i;
        while (next < content.size() && content.at(next) != u'{' && content.at(next) != u'}')
            ++next;
        appendLiteral(view.sliced(i, next - i));
        i = next;
        if (i >= content.size())
            break;
        const QStringView rest = view.sliced(i);
        if (rest.startsWith(u"{{{{")) {
            appendLiteral(opening);
            m_hasEscape = true;
            escapeOpen = true;
            i += 4;
        } else if (rest.startsWith(u"{{{")) {
            appendLiteral(u"{"); // the placeholder takes the last two braces
            i += 1;
        } else if (rest.startsWith(opening)) {
            escapeOpen = false;
            i = readPlaceholder(content, i);
        } else if (rest.startsWith(closing)) {
            if (!escapeOpen)
                m_issues.append(Issue{Problem::StrayClosing, i, closing});
            escapeOpen = false;
            appendLiteral(closing);
            i += 2;
        } else {
            appendLiteral(rest.first(1));
            i += 1;
        }
    }
}

qsizetype PlaceholderText::readPlaceholder(const QString& content, qsizetype start) {
    const qsizetype end = lineEnd(content, start);
    const qsizetype close = content.indexOf(closing, start + 2);
    const qsizetype inner = content.indexOf(opening, start + 2);
    const auto notClosed = [&] {
        m_issues.append(Issue{Problem::NotClosed, start, content.mid(start, end - start)});
        appendLiteral(opening);
        return start + 2;
    };
    if (close < 0 || close + 2 > end)
        return notClosed();
    if (inner >= 0 && inner < close) {
        // Braces inside braces: the whole nest, to its matching }}, is text.
        int depth = 0;
        qsizetype at = start;
        while (at < end) {
            const qsizetype nextOpen = content.indexOf(opening, at);
            const qsizetype nextClose = content.indexOf(closing, at);
            if (nextClose < 0 || nextClose + 2 > end)
                break;
            if (nextOpen >= 0 && nextOpen < nextClose) {
                ++depth;
                at = nextOpen + 2;
                continue;
            }
            at = nextClose + 2;
            if (--depth == 0) {
                const QString written = content.mid(start, at - start);
                m_issues.append(Issue{Problem::Nested, start, written});
                appendLiteral(written);
                return at;
            }
        }
        return notClosed();
    }

    const QString name = content.mid(start + 2, close - start - 2);
    const QString written = content.mid(start, close + 2 - start);
    const auto withFormat = [&name](QStringView prefix) {
        return name.size() > prefix.size() && name.startsWith(prefix);
    };
    if (name == u"date") {
        add(Kind::Date);
    } else if (name == u"time") {
        add(Kind::Time);
    } else if (withFormat(u"date:") || withFormat(u"time:")) {
        add(name.startsWith(u'd') ? Kind::Date : Kind::Time, name.mid(5));
    } else if (name == u"clipboard") {
        add(Kind::Clipboard);
    } else if (name.startsWith(u"field:")) {
        if (!addFormField(Kind::Field, name.mid(6), start, written))
            appendLiteral(written);
    } else if (name.startsWith(u"area:")) {
        if (!addFormField(Kind::Area, name.mid(5), start, written))
            appendLiteral(written);
    } else if (name.startsWith(u"choice:")) {
        if (!addFormField(Kind::Choice, name.mid(7), start, written))
            appendLiteral(written);
    } else if (name == u"cursor" && !m_hasCursor) {
        add(Kind::Cursor);
        m_hasCursor = true;
    } else {
        const Problem problem = name == u"cursor" ? Problem::ExtraCursor
                                : name.isEmpty()  ? Problem::EmptyBraces
                                                  : Problem::UnknownName;
        m_issues.append(Issue{problem, start, written});
        appendLiteral(written);
    }
    return close + 2;
}

bool PlaceholderText::addFormField(Kind kind, const QString& inner, qsizetype start,
                                   const QString& written) {
    const qsizetype equals = inner.indexOf(u'=');
    Part part{kind, {}, inner.left(equals).trimmed(), {}};
    const QString value = equals < 0 ? QString() : inner.mid(equals + 1);
    if (part.name.isEmpty()) {
        m_issues.append(Issue{Problem::UnnamedField, start, written});
        return false;
    }
    if (kind == Kind::Choice) {
        part.options = choices(value);
        if (part.options.isEmpty()) {
            m_issues.append(Issue{Problem::NoChoices, start, written});
            return false;
        }
    } else {
        part.text = value;
    }
    m_parts.append(part);
    return true;
}

bool PlaceholderText::isDynamic() const {
    return m_hasEscape || std::any_of(m_parts.cbegin(), m_parts.cend(),
                                      [](const Part& part) { return part.kind != Kind::Literal; });
}

bool PlaceholderText::uses(Kind kind) const {
    return std::any_of(m_parts.cbegin(), m_parts.cend(),
                       [kind](const Part& part) { return part.kind == kind; });
}

bool PlaceholderText::asksForValues() const {
    return uses(Kind::Field) || uses(Kind::Area) || uses(Kind::Choice);
}

QList<PlaceholderText::FormField> PlaceholderText::formFields() const {
    QList<FormField> fields;
    for (const Part& part : m_parts) {
        if (part.kind != Kind::Field && part.kind != Kind::Area && part.kind != Kind::Choice)
            continue;
        if (std::none_of(fields.cbegin(), fields.cend(),
                         [&part](const FormField& field) { return field.name == part.name; }))
            fields.append(part);
    }
    return fields;
}

QString PlaceholderText::defaultValue(const FormField& field) {
    return field.kind == Kind::Choice ? field.options.value(0) : field.text;
}

PlaceholderText::Rendered PlaceholderText::render(const QDateTime& now,
                                                  const std::optional<QString>& clipboard,
                                                  const QLocale& locale,
                                                  const QHash<QString, QString>& values) const {
    // The first use of a name decides its default, as it decides the form's input.
    QHash<QString, QString> filled = values;
    for (const FormField& field : formFields())
        if (!filled.contains(field.name))
            filled.insert(field.name, defaultValue(field));
    Rendered rendered;
    for (const Part& part : m_parts) {
        switch (part.kind) {
        case Kind::Literal:
            rendered.text += part.text;
            break;
        case Kind::Date:
            rendered.text += part.text.isEmpty() ? locale.toString(now.date(), QLocale::ShortFormat)
                                                 : locale.toString(now, part.text);
            break;
        case Kind::Time:
            rendered.text += part.text.isEmpty() ? locale.toString(now.time(), QLocale::ShortFormat)
                                                 : locale.toString(now, part.text);
            break;
        case Kind::Clipboard:
            if (clipboard)
                rendered.text += *clipboard;
            else
                rendered.clipboardMissing = true;
            break;
        case Kind::Cursor:
            rendered.cursor = rendered.text.size();
            break;
        case Kind::Field:
        case Kind::Area:
        case Kind::Choice:
            rendered.text += filled.value(part.name);
            break;
        }
    }
    return rendered;
}
