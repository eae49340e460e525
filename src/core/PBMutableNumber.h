#pragma once

#include "platform/values/PBValue.h"

#include <utility>

/// A box through which the operations of one scan share a changing value. No lock: it belongs to
/// the scan thread, or to whoever hands it over whole.
class PBMutableNumber {
public:
    explicit PBMutableNumber(PBValue number = {}) : _number(std::move(number)) {}
    [[nodiscard]] const PBValue& number() const { return _number; }
    void setNumber(PBValue number) { _number = std::move(number); }

private:
    PBValue _number;
};
