#pragma once

#include <QImage>

#include <cstdint>

/// Landscapes out of gradients, noise and silhouettes. The same number gives the same picture.
namespace scenes {

enum class Kind { Mountains, Lake, Forest, Sea, Desert, City, Night, Flowers };

/// The light that a picture is taken in.
enum class Light { Dawn, Day, Evening, Dusk };

[[nodiscard]] QImage paint(Kind kind, Light light, QSize size, std::uint32_t number);

} // namespace scenes
