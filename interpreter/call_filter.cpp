#include "interpreter/call_filter.h"

#include <linux/audit.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>

namespace rastrel::interpreter {
namespace {

#if defined(__x86_64__)
constexpr unsigned Architecture = AUDIT_ARCH_X86_64;
constexpr unsigned FirstForeignCall = 0x40000000;  // of the other ABI of 64-bit kernels
#elif defined(__aarch64__)
constexpr unsigned Architecture = AUDIT_ARCH_AARCH64;
constexpr unsigned FirstForeignCall = ~0U;
#else
constexpr unsigned Architecture = 0;
constexpr unsigned FirstForeignCall = ~0U;
#endif

constexpr unsigned Allow = SECCOMP_RET_ALLOW;
constexpr unsigned Refuse = SECCOMP_RET_ERRNO | EPERM;
constexpr unsigned Ask = SECCOMP_RET_USER_NOTIF;          // of whoever has the listener
constexpr unsigned Missing = SECCOMP_RET_ERRNO | ENOSYS;  // the C library then takes another call
// CLONE_NEWNS and its like. The lowest one lies where clone has the signal of the child's end.
constexpr unsigned NamespaceFlags = 0x7E020000;
constexpr unsigned ChangeModeAt2 = 452;  // fchmodat2, younger than the headers

constexpr auto RefusedCalls = std::to_array<unsigned>({
  // other machines, and services of this one
  SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4,
      // other processes
      SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_process_madvise, SYS_pidfd_getfd,
      SYS_pidfd_send_signal, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_tkill, SYS_kcmp,
      SYS_perf_event_open,
      // namespaces and mounts
      SYS_unshare, SYS_setns, SYS_mount, SYS_umount2, SYS_pivot_root, SYS_chroot, SYS_open_tree,
      SYS_move_mount, SYS_mount_setattr, SYS_fsopen, SYS_fsconfig, SYS_fsmount, SYS_fspick,
      // files by another way than their path, and their owners and modes, which no rule of paths
      // covers
      SYS_name_to_handle_at, SYS_open_by_handle_at, SYS_fanotify_init, SYS_truncate, SYS_fchmodat,
      ChangeModeAt2, SYS_fchownat, SYS_setxattr, SYS_lsetxattr, SYS_removexattr, SYS_lremovexattr,
#if defined(__x86_64__)
      SYS_chmod, SYS_chown, SYS_lchown,
#endif
      // the kernel
      SYS_keyctl, SYS_add_key, SYS_request_key, SYS_bpf, SYS_io_uring_setup, SYS_io_uring_enter,
      SYS_io_uring_register, SYS_userfaultfd, SYS_init_module, SYS_finit_module, SYS_delete_module,
      SYS_kexec_load, SYS_reboot, SYS_swapon, SYS_swapoff, SYS_acct, SYS_quotactl, SYS_syslog,
      SYS_settimeofday, SYS_clock_settime, SYS_clock_adjtime, SYS_adjtimex, SYS_sethostname,
      SYS_setdomainname, SYS_personality,
#if defined(__x86_64__)
      SYS_iopl, SYS_ioperm, SYS_modify_ldt, SYS_kexec_file_load,
#endif
});

// Arguments are 64 bits, of which a filter reads 32: the low ones first on these processors.
constexpr std::size_t ArgumentAt(std::size_t index) {
  static_assert(std::endian::native == std::endian::little);
  return offsetof(seccomp_data, args) + index * sizeof(std::uint64_t);
}

}  // namespace

// The program, an instruction a line; a call that no line decides is allowed:
//
//   is the architecture another one, or the call one of another ABI?  refuse
//   is the call clone3?  as if it were missing, since clone has its flags in sight
//   is it an exec?  as WallPrograms says: allow, ask the listener, or refuse
//   is the call one of RefusedCalls?  refuse
//   is it clone with a flag of a namespace?  refuse
//   is it kill, tgkill or prlimit on another process?  refuse
//   is it ioctl with a byte for a terminal's input?  refuse
CallFilter::CallFilter(WallPrograms programs) {
  if (Architecture == 0) return;
  Load(offsetof(seccomp_data, arch));
  Add(BPF_JMP | BPF_JEQ | BPF_K, Architecture, 1, 0);
  Add(BPF_RET | BPF_K, Refuse);
  Load(offsetof(seccomp_data, nr));
  Add(BPF_JMP | BPF_JGE | BPF_K, FirstForeignCall, 0, 1);
  Add(BPF_RET | BPF_K, Refuse);
  Add(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 0, 1);
  Add(BPF_RET | BPF_K, Missing);
  DecideExecs(programs);
  RefuseCalls();
  RefuseWhere(SYS_clone, 0, BPF_JSET, NamespaceFlags);
  for (const int call : {SYS_kill, SYS_tgkill, SYS_prlimit64}) RefuseOnOthers(call);
  RefuseWhere(SYS_ioctl, 1, BPF_JEQ, TIOCSTI);
  Add(BPF_RET | BPF_K, Allow);
}

void CallFilter::Add(unsigned short code, unsigned value, unsigned char yes, unsigned char no) {
  m_Program.push_back({code, yes, no, value});
}

void CallFilter::Load(std::size_t offset) {
  Add(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offset));
}

// The arguments of an exec are addresses, which say nothing of the program after another one has
// put its own bytes there. So it is not they that decide, but that the listener is gone by then.
void CallFilter::DecideExecs(WallPrograms programs) {
  if (programs == WallPrograms::Any) return;
  for (const unsigned call : {unsigned{SYS_execve}, unsigned{SYS_execveat}}) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1);
    if (programs == WallPrograms::One) m_Asked.push_back(m_Program.size());
    Add(BPF_RET | BPF_K, programs == WallPrograms::One ? Ask : Refuse);
  }
}

void CallFilter::RefuseCalls() {
  for (const unsigned call : RefusedCalls) {
    Add(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1);
    Add(BPF_RET | BPF_K, Refuse);
  }
}

void CallFilter::RefuseWhere(unsigned call, unsigned argument, unsigned short comparison,
                             unsigned value) {
  Add(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 4);
  Load(ArgumentAt(argument));
  Add(BPF_JMP | comparison | BPF_K, value, 0, 1);
  Add(BPF_RET | BPF_K, Refuse);
  Add(BPF_RET | BPF_K, Allow);
}

// Process 0 is itself as well, or its own group.
void CallFilter::RefuseOnOthers(int call) {
  Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 5);
  Load(ArgumentAt(0));
  Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 2, 0);
  m_OwnId.push_back(m_Program.size());
  Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0);
  Add(BPF_RET | BPF_K, Refuse);
  Add(BPF_RET | BPF_K, Allow);
}

int CallFilter::Enter() noexcept {
  if (m_Program.empty()) return -1;
  const auto own = static_cast<unsigned>(getpid());
  for (const std::size_t at : m_OwnId) m_Program[at].k = own;
  const sock_fprog program{static_cast<unsigned short>(m_Program.size()), m_Program.data()};
  const auto set = [&program](unsigned long flags) {
    return static_cast<int>(syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program));
  };
  // Without the flag, older kernels switch a slow protection of the processor on as well, which is
  // for programs that run foreign machine code.
  constexpr unsigned long fast = SECCOMP_FILTER_FLAG_SPEC_ALLOW;
  if (!m_Asked.empty()) {
    const int listener = set(fast | SECCOMP_FILTER_FLAG_NEW_LISTENER);
    if (listener >= 0) return listener;
    // An older kernel, or another filter around this process that has a listener.
    for (const std::size_t at : m_Asked) m_Program[at].k = Allow;
  }
  if (set(fast) != 0) set(0);
  return -1;
}

bool CallFilter::IsPossible() {
  const unsigned action = SECCOMP_RET_ERRNO;
  return Architecture != 0 && syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

}  // namespace rastrel::interpreter
