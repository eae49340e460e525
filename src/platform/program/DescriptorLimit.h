#pragma once

namespace platform {

/// Lets this process open as many files as it may, up to some thousands: the soft limit that
/// programs start with is for those that know no better than `select`. Programs that this one
/// starts get the same.
void raiseDescriptorLimit();

} // namespace platform
