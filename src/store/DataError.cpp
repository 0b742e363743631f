#include "DataError.h"

QString DataError::description() const {
    switch (m_kind) {
    case Kind::duplicateCategoryName:
        return QStringLiteral("A category with this name already exists");
    }
    return {};
}
