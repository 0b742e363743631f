#pragma once

#include "DataError.h"
#include "SnippetStore.h"

#include <QCoreApplication>
#include <QString>

// The words the windows use for what the store refused, could not keep, or warns of: the store
// says what happened, the windows say it to the user.
class StoreMessages {
    Q_DECLARE_TR_FUNCTIONS(StoreMessages)
public:
    static QString text(const DataError& error);
    // Empty when there is no clash.
    static QString text(const SnippetStore::CommandClash& clash);
};
