#include "DataError.h"

#include <QCoreApplication>

QString DataError::description() const {
    switch (m_kind) {
    case Kind::duplicateCategoryName:
        return QCoreApplication::translate("DataError", "A category with this name already exists");
    case Kind::duplicateCommand:
        return QCoreApplication::translate("DataError", "This command already exists");
    case Kind::blankCommand:
        return QCoreApplication::translate(
            "DataError", "Enter a command: a blank one would expand on every key");
    case Kind::notSaved:
    case Kind::unreadableImport:
        return m_why;
    }
    return {};
}
