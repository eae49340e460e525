#include "codec/process/Confinement.h"

#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"

#include <seccomp.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>
#include <span>
#include <type_traits>

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace codec::process {

namespace {

/// The sanitizers map a large part of the address space for themselves, and find out through a pipe
/// whether an address may be read.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
constexpr int sanitizerCalls[] = {SCMP_SYS(pipe2), SCMP_SYS(write)};

/// What computing on mapped memory needs, whatever the arguments.
constexpr int harmlessCalls[] = {
    SCMP_SYS(brk),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(close),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(fstat),
    SCMP_SYS(futex),
    SCMP_SYS(getpid),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrusage),
    SCMP_SYS(gettid),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(lseek),
    SCMP_SYS(madvise),
    SCMP_SYS(membarrier),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    SCMP_SYS(nanosleep),
    SCMP_SYS(poll),
    SCMP_SYS(pread64),
    SCMP_SYS(read),
    SCMP_SYS(readv),
    SCMP_SYS(recvmsg),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_yield),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(set_tid_address),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(sysinfo),
    SCMP_SYS(tgkill),
    SCMP_SYS(times),
    SCMP_SYS(uname),
};

struct ReleaseFilter {
    void operator()(void* filter) const { seccomp_release(filter); }
};

/// Where memory is short, a decoder goes before the program and before those of others.
constexpr const char firstToGo[] = "500";

void offerMemory() {
    const Descriptor score(::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (score.isOpen())
        static_cast<void>(::write(score.get(), firstToGo, sizeof firstToGo - 1) > 0);
}

bool setLimit(__rlimit_resource resource, rlim_t limit) {
    const rlimit both{limit, limit};
    return ::setrlimit(resource, &both) == 0;
}

/// Calls that are allowed with some arguments only.
bool addGuardedCalls(void* filter) {
    const auto allow = [filter](int call, auto... comparisons) {
        return seccomp_rule_add(
                   filter, SCMP_ACT_ALLOW, call, sizeof...(comparisons), comparisons...) == 0;
    };
    // Nothing that was written may ever be executed.
    bool added = allow(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)) &&
                 allow(SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
    // Packets and warnings only.
    added = added && allow(SCMP_SYS(sendmsg), SCMP_A0(SCMP_CMP_EQ, socketDescriptor)) &&
            allow(SCMP_SYS(write), SCMP_A0(SCMP_CMP_EQ, STDERR_FILENO)) &&
            allow(SCMP_SYS(writev), SCMP_A0(SCMP_CMP_EQ, STDERR_FILENO));
    // Threads, but no processes. The newer call hides its flags from the filter; told that it does
    // not exist, the C library takes the older one.
    added = added &&
            allow(SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD)) &&
            seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0;
    // Of an open descriptor, never of a path.
    added = added &&
            allow(SCMP_SYS(newfstatat), SCMP_A3(SCMP_CMP_MASKED_EQ, AT_EMPTY_PATH, AT_EMPTY_PATH));
    added = added && allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_GETFL)) &&
            allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_GETFD)) &&
            allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_DUPFD_CLOEXEC));
    // Limits may be asked, not changed; names of threads may be set.
    return added && allow(SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0)) &&
           allow(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME)) &&
           allow(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_VMA));
}

bool loadFilter() {
    // What is not allowed fails as if it were forbidden: libraries ask for much that they can do
    // without.
    const std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, ReleaseFilter> filter(
        seccomp_init(SCMP_ACT_ERRNO(EPERM)));
    if (!filter) return false;
    const auto allowAll = [&](std::span<const int> calls) {
        return std::ranges::all_of(calls, [&](int call) {
            return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) == 0;
        });
    };
    if (!allowAll(harmlessCalls) || (isSanitized && !allowAll(sanitizerCalls))) return false;
    return addGuardedCalls(filter.get()) && seccomp_load(filter.get()) == 0;
}

} // namespace

std::uint64_t confine(std::uint64_t addressSpaceBytes) {
    std::uint64_t refused = 0;
    offerMemory();
    // It has nobody to work for when the program is gone.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) refused |= RefusedPrivileges;
    const bool limited = setLimit(RLIMIT_CORE, 0) && setLimit(RLIMIT_FSIZE, 0) &&
                         (isSanitized || setLimit(RLIMIT_AS, addressSpaceBytes));
    if (!limited) refused |= RefusedMemoryLimit;
    if (!loadFilter()) refused |= RefusedFilter;
    return refused;
}

} // namespace codec::process
