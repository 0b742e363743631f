#include "DataError.h"

#include <QCoreApplication>

QString DataError::description() const {
    switch (m_kind) {
    case Kind::duplicateCategoryName:
        return QCoreApplication::translate("DataError", "A category with this name already exists");
    }
    return {};
}
