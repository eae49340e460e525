#pragma once

class PBAliasObject;

/// Whether the root's own folder, and not merely one in its place such as the mount point that a
/// disk left behind, stands where the root is said to be. False also if it can't be looked at.
/// Blocks for the disk; any thread.
[[nodiscard]] bool isRootThere(const PBAliasObject& aliasObject);
