#pragma once

// Names for clang's thread-safety attributes; nothing for other compilers. `.ci/run` compiles the
// tree with -Wthread-safety as errors. Macros, since the attributes have no spelling that both
// compilers take: clang knows several of them in the GNU form only.

#if defined(__clang__)
#define VELMORA_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define VELMORA_THREAD_ATTRIBUTE(attribute)
#endif

/// A type whose objects are held and let go, such as a mutex.
#define VELMORA_CAPABILITY(name) VELMORA_THREAD_ATTRIBUTE(capability(name))
/// A type that holds a capability from its construction to its destruction.
#define VELMORA_SCOPED_CAPABILITY VELMORA_THREAD_ATTRIBUTE(scoped_lockable)
/// A field that is read and written only while the mutex is held.
#define VELMORA_GUARDED_BY(mutex) VELMORA_THREAD_ATTRIBUTE(guarded_by(mutex))
/// A function that is called with the mutex held, and leaves it so.
#define VELMORA_REQUIRES(mutex) VELMORA_THREAD_ATTRIBUTE(requires_capability(mutex))
/// A function that takes, lets go, or tries to take the mutex; of the object itself without a name.
#define VELMORA_ACQUIRE(...) VELMORA_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VELMORA_RELEASE(...) VELMORA_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// A function that says to the analysis that the mutex is held, where it can't see it: in a lambda.
#define VELMORA_ASSERT_HELD(mutex) VELMORA_THREAD_ATTRIBUTE(assert_capability(mutex))
