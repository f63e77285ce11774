// What clang's thread-safety analysis reads; empty under other compilers.
#pragma once

#if defined(__clang__)
#define THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define THREAD_SAFETY(attribute)
#endif

#define CAPABILITY(kind) THREAD_SAFETY(capability(kind))
#define SCOPED_CAPABILITY THREAD_SAFETY(scoped_lockable)
#define GUARDED_BY(capability) THREAD_SAFETY(guarded_by(capability))
#define REQUIRES(...) THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) THREAD_SAFETY(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_SAFETY(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
#define ASSERT_CAPABILITY(capability) THREAD_SAFETY(assert_capability(capability))
