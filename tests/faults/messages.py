"""Messages and exit statuses that a run may end with."""

import re

# As docs and cli/exit_status.h have them: failed, bad input, not installed. No failing call is wrong
# use, a cancelled job or a chart without a match.
CLEAR_STATUSES = {1, 3, 5}
CRASH_SIGNALS = {3: "SIGQUIT", 4: "SIGILL", 5: "SIGTRAP", 6: "SIGABRT", 7: "SIGBUS", 8: "SIGFPE",
                 11: "SIGSEGV", 13: "SIGPIPE", 31: "SIGSYS"}
ERROR = re.compile(r"^rastrel: (.+)$", re.M)
# Messages of a program that did not foresee its failure.
UNFORESEEN = re.compile(r"terminate called|what\(\)|std::|Segmentation fault|^Aborted|assertion|"
                        r"stack smashing|corrupted|runtime error:|ERROR: \w+Sanitizer|CRITICAL",
                        re.I | re.M)


def findings(status, error):
    """Faults of a run's end, given that no signal ended it."""
    lines = ERROR.findall(error)
    if UNFORESEEN.search(error):
        yield f"not foreseen: {UNFORESEEN.search(error).group(0)}"
    if status == 0:
        return
    if status not in CLEAR_STATUSES:
        yield f"exit status {status}"
    if not lines:
        yield f"no error, but exit status {status}"
    elif len(lines) > 1:
        yield f"{len(lines)} errors"
