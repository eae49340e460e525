#pragma once

#include "platform/PBValue.h"

#include <cstdint>
#include <utility>

/// Boxes through which the operations of one scan share a changing value. No lock: a box belongs to
/// the scan thread, or to whoever hands it over whole.

class PBMutableNumber {
public:
    explicit PBMutableNumber(PBValue number = {}) : _number(std::move(number)) {}
    [[nodiscard]] const PBValue& number() const { return _number; }
    void setNumber(PBValue number) { _number = std::move(number); }

private:
    PBValue _number;
};

class PBMutableBool {
public:
    explicit PBMutableBool(bool value = false) : _value(value) {}
    [[nodiscard]] bool value() const { return _value; }
    void setValue(bool value) { _value = value; }

private:
    bool _value;
};

class PBMutableInt {
public:
    explicit PBMutableInt(std::int64_t value = 0) : _value(value) {}
    [[nodiscard]] std::int64_t value() const { return _value; }
    void setValue(std::int64_t value) { _value = value; }

private:
    std::int64_t _value;
};
