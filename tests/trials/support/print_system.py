"""A private print system: cupsd in one folder, as the superuser, with nothing of the machine's own."""

import grp
import os
import shutil
import socket
import subprocess
import time

WAIT = 120  # seconds, for whatever is waited for
FILES = """ServerRoot {0}/etc
RequestRoot {0}/requests
CacheDir {0}/cache
StateDir {0}/state
TempDir {0}/temp
AccessLog {0}/access.log
ErrorLog {0}/error.log
PageLog {0}/page.log
ServerKeychain {0}/keys
SystemGroup root
FileDevice Yes
"""
SERVER = """Listen 127.0.0.1:{0}
Browsing Off
DefaultAuthType None
WebInterface No
<Location />
  Order deny,allow
  Allow 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
    Allow 127.0.0.1
  </Limit>
</Policy>
"""


def can_run():
    """Whether this user may run one here."""
    return bool(shutil.which("cupsd") and shutil.which("lpadmin") and os.geteuid() == 0)


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def wait_for(condition, name):
    end = time.monotonic() + WAIT
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.1)
    raise SystemExit(f"{name} did not come within {WAIT} seconds")


def answers(port):
    try:
        socket.create_connection(("127.0.0.1", port), 1).close()
        return True
    except OSError:
        return False


def start_print_system(place, port):
    for name in ("etc", "requests", "cache", "state", "temp", "keys"):
        (place / name).mkdir(parents=True)
    (place / "etc/cups-files.conf").write_text(FILES.format(place))
    (place / "etc/cupsd.conf").write_text(SERVER.format(port))
    place.chmod(0o755)
    # Filters are run as the user lp.
    os.chown(place / "temp", 0, grp.getgrnam("lp").gr_gid)
    (place / "temp").chmod(0o1770)
    return subprocess.Popen(["cupsd", "-f", "-c", str(place / "etc/cupsd.conf"),
                             "-s", str(place / "etc/cups-files.conf")],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
