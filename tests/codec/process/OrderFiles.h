#pragma once

#include "codec/metadata/Pictures.h"
#include "codec/process/DecoderPool.h"

/// Files of orders for decoder processes that misbehave.
struct OrderFiles : testing::Test {
    /// Without processes that are kept back.
    static codec::DecoderPool::Settings
    settings(int processes, std::chrono::milliseconds time = std::chrono::minutes(1)) {
        return {
            .executable = MISBEHAVING_DECODER,
            .processes = processes,
            .reserved = 0,
            .thumbnailTime = time,
            .fullTime = time};
    }

    /// An open file of orders.
    static auto orders(const QByteArray& text) { return pictures::fileOf(text); }

    static codec::DecodeRequest
    requestFor(int maxSize, codec::Urgency urgency = codec::Urgency::Thumbnail) {
        return {.maxSize = maxSize, .urgency = urgency};
    }

    codec::DecoderPool pool{settings(1)}; // starts nothing by itself
};
