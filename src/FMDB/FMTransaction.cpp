#include "FMDB/FMTransaction.h"

#include <utility>

FMTransaction::FMTransaction(FMDatabase& db, FMDatabase::Others others)
    : _db(db), _isPart(db.isTransactionPending()) {
    // What is meant to be stored whole is not stored row by row where it can't begin.
    if (!_isPart && !_db.beginTransaction(others)) _db.setTransactionLost();
}

FMTransaction::~FMTransaction() {
    if (!_isPending) return;
    if (_isPart) {
        _db.setTransactionLost();
    } else {
        _db.rollback();
    }
}

bool FMTransaction::isOpen() const {
    return _isPending && _db.inTransaction();
}

bool FMTransaction::commit() {
    if (!std::exchange(_isPending, false)) return false;
    if (_isPart) return _db.inTransaction();
    if (_db.commit()) return true;
    if (_db.inTransaction()) _db.rollback();
    return false;
}

QString FMTransaction::errorMessage() const {
    return _db.transactionErrorMessage();
}
