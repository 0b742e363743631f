#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <optional>

// A snippet's content read as literal text and placeholders. The stored content stays the
// string the user wrote; this is how it is read when it is typed and when the editor previews it.
//
//   {{date}}, {{time}}      today's date, the time now, in the locale's short formats
//   {{date:FORMAT}}         date and time in a QDateTime format, e.g. {{date:yyyy-MM-dd}}
//   {{time:FORMAT}}         the same, for symmetry: {{time:HH:mm:ss}}
//   {{clipboard}}           the clipboard's text at the moment of expansion (empty if none)
//   {{cursor}}              where the text cursor stands afterwards; only the first one counts
//   {{field:Name}}          a value asked for in a small form before the content is typed;
//   {{field:Name=default}}  the form's field starts with the default (or the value given last)
//   {{area:Name}}           the same, several lines long ({{area:Name=default}} too)
//   {{choice:Label=a|b|c}}  one of the listed values, the first unless another is chosen
//                           (\| writes a | inside a value, \\ a backslash)
//                           Form names are trimmed and case-sensitive: the same name anywhere in
//                           the content is one field with one value (its first use says its kind)
//   {{{{                    a literal {{ (the }} that closes it is literal too, so
//                           {{{{date}} writes {{date}})
//
// Anything else between double braces is typed exactly as written and reported as a problem:
// unknown names ({{name}}), empty braces ({{}}), a form field without a name ({{field:}}) or a
// choice without values ({{choice:Size}}), braces never closed on their line ({{date),
// a }} that closes nothing, braces inside braces ({{a{{b}}}}), and every {{cursor}} after the
// first. Names are exact (lower case, no spaces). A run of three braces is a literal { followed
// by a placeholder, so {{{date}}} writes the date between single braces.
class PlaceholderText {
public:
    enum class Kind { Literal, Date, Time, Clipboard, Cursor, Field, Area, Choice };
    struct Part {
        Kind kind = Kind::Literal;
        // Literal: the text; Date and Time: the format, empty for the locale's; Field and Area:
        // the default value.
        QString text;
        QString name;        // Field, Area, Choice
        QStringList options; // Choice
        friend bool operator==(const Part&, const Part&) = default;
    };
    // One input of the form: a Field, Area or Choice part, the first of its name.
    using FormField = Part;

    enum class Problem {
        UnknownName,
        EmptyBraces,
        NotClosed,
        StrayClosing,
        Nested,
        ExtraCursor,
        UnnamedField, // {{field:}}, {{area:=x}}, {{choice:=a|b}}
        NoChoices,    // {{choice:Label}} with no values to choose from
    };
    struct Issue {
        Problem problem = Problem::UnknownName;
        qsizetype position = 0; // offset in the content (UTF-16 code units)
        QString written;        // the content's text at that place, as typed
        friend bool operator==(const Issue&, const Issue&) = default;
    };

    struct Rendered {
        QString text;
        qsizetype cursor = -1;         // offset in `text` where the cursor goes, -1 without one
        bool clipboardMissing = false; // a {{clipboard}} found no text to give
    };

    explicit PlaceholderText(const QString& content);

    const QList<Part>& parts() const { return m_parts; }
    const QList<Issue>& issues() const { return m_issues; }
    // Whether any placeholder or escape changes the text from what is stored.
    bool isDynamic() const;
    bool uses(Kind kind) const;
    // Whether a form asks for values before the content is typed.
    bool asksForValues() const;
    // The form's inputs, one per distinct name, in the order they first appear.
    QList<FormField> formFields() const;

    // The text as typed at `now`; `clipboard` is the clipboard's text (none when it holds no
    // text, for example only an image); `values` the form's, by name (a field without one types
    // its default, a choice its first value).
    Rendered render(const QDateTime& now, const std::optional<QString>& clipboard,
                    const QLocale& locale, const QHash<QString, QString>& values = {}) const;
    // What a form field types without a value of its own.
    static QString defaultValue(const FormField& field);

private:
    void appendLiteral(QStringView text);
    void add(Kind kind, const QString& text = {});
    // {{field:…}}, {{area:…}} or {{choice:…}}: `inner` is what follows the colon. False when it
    // is typed as written (a problem was reported).
    bool addFormField(Kind kind, const QString& inner, qsizetype start, const QString& written);
    void parse(const QString& content);
    // Reads the placeholder that starts at `start` (two braces); returns where reading goes on.
    qsizetype readPlaceholder(const QString& content, qsizetype start);

    QList<Part> m_parts;
    QList<Issue> m_issues;
    bool m_hasCursor = false;
    bool m_hasEscape = false;
};
