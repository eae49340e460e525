#include "core/PBAppDelegate.h"

namespace {

PBAppDelegate* installed = nullptr;

} // namespace

PBAppDelegate* PBAppDelegate::defaultAppDelegate() {
    return installed;
}

void PBAppDelegate::setDefaultAppDelegate(PBAppDelegate* delegate) {
    installed = delegate;
}
