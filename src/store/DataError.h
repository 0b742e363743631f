#pragma once

#include <QString>

// The one error the store reports to its callers.
class DataError {
public:
    enum class Kind { duplicateCategoryName };

    static DataError duplicateCategoryName() { return DataError(Kind::duplicateCategoryName); }

    Kind kind() const { return m_kind; }
    // The text the forms show under the name field.
    QString description() const;

    // There is only one kind, so every two errors are equal.
    friend bool operator==(const DataError&, const DataError&) { return true; }

private:
    explicit DataError(Kind kind) : m_kind(kind) {}
    Kind m_kind;
};
