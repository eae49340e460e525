#pragma once

#include "codec/process/DecoderPool.h"
#include "codec/process/Descriptor.h"
#include "support/Support.h"

#include <fcntl.h>

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
    codec::process::Descriptor orders(const QByteArray& text) {
        const QString path = folder.filePath(QString::number(++files));
        support::writeFile(path, text);
        return codec::process::Descriptor(
            ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    }

    static codec::DecodeRequest
    requestFor(int maxSize, codec::Urgency urgency = codec::Urgency::Thumbnail) {
        codec::DecodeRequest request;
        request.maxSize = maxSize;
        request.urgency = urgency;
        return request;
    }

    QTemporaryDir folder;
    std::atomic<int> files = 0;
    codec::DecoderPool pool{settings(1)}; // starts nothing by itself
};
