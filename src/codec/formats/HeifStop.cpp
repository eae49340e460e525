#include "codec/formats/HeifStop.h"

#include <atomic>

#include <libheif/heif.h>
#include <libheif/heif_plugin.h>

namespace codec::formats {

namespace {

constexpr int oldestInterface = 3; // with names
constexpr int beforeAllOthers = 1'000'000;

std::atomic<const StopFlag*> present{nullptr};

heif_error refusal() {
    return {heif_error_Decoder_plugin_error, heif_suberror_Unspecified, "stopped"};
}

/// The library has no way to stop a decode, but looks for the best decoder for each tile: this one
/// is none at all, until the flag is set; then it is the best, and fails.
const heif_decoder_plugin refusing = {
    .plugin_api_version = oldestInterface,
    .get_plugin_name = [] { return "stop"; },
    .init_plugin = nullptr,
    .deinit_plugin = nullptr,
    .does_support_format =
        [](heif_compression_format) {
            const StopFlag* flag = present.load();
            return flag && flag->isSet() ? beforeAllOthers : 0;
        },
    .new_decoder =
        [](void** decoder) {
            *decoder = nullptr;
            return refusal();
        },
    .free_decoder = [](void*) {},
    .push_data = [](void*, const void*, std::size_t) { return refusal(); },
    .decode_image =
        [](void*, heif_image** image) {
            *image = nullptr;
            return refusal();
        },
    .set_strict_decoding = [](void*, int) {},
    .id_name = "stop"};

} // namespace

HeifStop::HeifStop(const StopFlag& flag) {
    [[maybe_unused]] static const heif_error registered = heif_register_decoder_plugin(&refusing);
    present = &flag;
}

HeifStop::~HeifStop() {
    present = nullptr;
}

} // namespace codec::formats
