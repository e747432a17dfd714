"""Shows that the checks of this folder notice the faults that they look for, on small programs and trees.

usage: checks_test.py INJECTOR
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import types
import unittest

import injections
import known_faults
import messages
import power_cuts
import scenes
import system_errors
from wholeness import Expected, Tree

INJECTOR = os.path.abspath(sys.argv.pop(1))
SHELL, CAT = (os.path.realpath(f"/bin/{name}") for name in ("sh", "cat"))
PAGE = "home/Queue/rip/CFM/sign.cfm/p0001"


class Place(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-faults-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name).resolve()
        (self.place / "slot").mkdir()

    def inject(self, options, *command):
        report = self.place / "report"
        run = subprocess.run([INJECTOR, "--report", str(report), "--ours", "/usr/bin",
                              "--ours", "/bin", *options, "--", *command],
                             cwd=self.place / "slot", capture_output=True, text=True, check=False,
                             timeout=60, env={**os.environ, "LC_ALL": "C"})
        if run.returncode == 1:
            self.skipTest("no process may follow another here")
        self.assertEqual(run.returncode, 0, run.stderr)
        return injections.Report(report, self.place / "slot"), run

    def shell(self, script, *options):
        return self.inject(options, SHELL, "-c", script)


class Injector(Place):
    def test_a_call_is_counted_and_fails_at_the_same_place(self):
        (self.place / "slot" / "text").write_text("words\n", encoding="utf-8")
        report, run = self.inject(["--calls"], CAT, "text")
        self.assertEqual((report.status, run.stdout), (0, "words\n"))
        read = next(call for call in report.calls
                    if call.name == "read" and call.detail == "SLOT/text")
        report, run = self.inject(["--fail", read.task, "read", str(read.number),
                                   str(system_errors.number_of("EIO"))], CAT, "text")
        self.assertTrue(report.failed)
        self.assertEqual((report.status, run.stdout), (1, ""))
        self.assertIn("Input/output error", run.stderr)

    def test_memory_that_is_refused_is_had_another_way(self):
        report, _ = self.shell("exit 3", "--calls")
        brk = [call for call in report.calls if call.name == "brk"][-1]
        report, _ = self.shell("exit 3", "--fail", brk.task, "brk", str(brk.number),
                               str(system_errors.number_of("ENOMEM")))
        self.assertEqual((report.failed, report.status), (True, 3))

    def test_the_loaders_calls_do_not_count(self):
        report, _ = self.inject(["--calls"], CAT, "/dev/null")
        self.assertFalse([call for call in report.calls if "ld.so.cache" in call.detail])
        self.assertTrue([call for call in report.calls if call.detail == "/dev/null"])

    def test_a_program_that_is_not_ours_is_left_alone(self):
        run = subprocess.run([INJECTOR, "--report", self.place / "report", "--ours", "/nowhere",
                              "--calls", "--", CAT, "/dev/null"], check=False)
        if run.returncode == 1:
            self.skipTest("no process may follow another here")
        self.assertEqual((self.place / "report").read_text(), "exit\t0\n")

    def test_a_child_has_an_address_of_its_own(self):
        report, run = self.shell("(:); (cd /); :", "--calls")
        self.assertEqual(report.status, 0, run.stderr)
        second = [call for call in report.calls if call.name == "chdir"]
        self.assertEqual([call.task for call in second], ["0.2"])

    def test_a_crash_is_seen(self):
        report, _ = self.shell("sh -c 'kill -SEGV $$'; exit 1")
        self.assertIn(f"SIGSEGV: {os.path.basename(SHELL)}",
                      list(report.findings("rastrel: words\n")))

    def test_a_run_without_end_is_seen_and_ended(self):
        report, _ = self.shell("sleep 100", "--limit", "1")
        self.assertEqual(list(report.findings("")), ["no end"])

    def test_a_process_that_stays_is_seen_and_ended(self):
        report, _ = self.shell("sleep 100 & echo $! >pid")
        self.assertEqual(list(report.findings("")), ["still running: sleep"])
        left = int((self.place / "slot" / "pid").read_text(encoding="utf-8"))
        status = pathlib.Path(f"/proc/{left}/status")
        # Gone, or dead and not yet taken note of by who inherited it.
        self.assertTrue(not status.exists() or "State:\tZ" in status.read_text(encoding="utf-8"))


class PowerCuts(Place):
    def record(self, script):
        slot = self.place / "slot"
        start = power_cuts.Disk.of(slot)
        self.shell(script, "--journal", str(self.place / "journal"), "--below", str(slot))
        recording = power_cuts.Recording.__new__(power_cuts.Recording)
        recording.subject = types.SimpleNamespace(scene=scenes.SCENES[0])
        recording.slot, recording.start = slot, start
        recording.changes = power_cuts.read_journal(self.place / "journal")
        return recording

    def seen(self, recording):
        """{name: content} of each state, with how it came about."""
        return [(cut.kind, {os.path.basename(path): disk.nodes[inode].data
                            for path, inode in disk.names.items()})
                for cut, disk in recording.states()]

    def test_each_change_is_a_state(self):
        recording = self.record("echo old >a; echo news >b; mv b a")
        self.assertEqual(self.seen(recording), [
            ("whole", {"a": b""}), ("torn", {"a": b"ol"}), ("whole", {"a": b"old\n"}),
            ("whole", {"a": b"old\n", "b": b""}), ("torn", {"a": b"old\n", "b": b"ne"}),
            ("whole", {"a": b"old\n", "b": b"news\n"}), ("whole", {"a": b"news\n"})])

    def test_bytes_that_were_not_synced_are_lost_behind_a_name(self):
        recording = self.record("echo new >b; mkdir d; mv b d/a; rm d/a; rmdir d")
        self.assertIn(("lost", {"a": b""}), self.seen(recording))

    def test_synced_bytes_survive(self):
        recording = self.record("echo new >b; sync b; mv b a")
        lost = [files for kind, files in self.seen(recording) if kind == "lost"]
        self.assertEqual(lost, [])  # no other state than with all changes

    def test_a_replay_leads_to_what_lies_there(self):
        recording = self.record("mkdir d; echo 1 >d/a; echo 2 >>d/a; ln d/a c; mv d e; : >c; "
                                "ln -s c l; cp e/a f; rm c; mv -T f e/a")
        self.assertTrue(recording._replays_to(power_cuts.Disk.of(self.place / "slot")))
        recording.changes.pop()
        self.assertFalse(recording._replays_to(power_cuts.Disk.of(self.place / "slot")))


class Wholeness(unittest.TestCase):
    def setUp(self):
        before = Tree({"user/sign.ps": b"%!", "out/a.pdf": b"earlier"}, {"out"})
        after = Tree({**before.files, "out/a.pdf": b"drawing", f"{PAGE}/.info": b"job: x\nend\n",
                      f"{PAGE}/page.ppm": b"pixels"}, {"out", PAGE, os.path.dirname(PAGE)})
        self.expected, self.before, self.after = Expected(before, after), before, after

    def tree(self, **changes):
        files = dict(self.after.files)
        files.update(changes.get("files", {}))
        for path in changes.get("without", ()):
            del files[path]
        return Tree(files, self.after.folders | set(changes.get("folders", ())))

    def test_what_should_be_there_is_fine(self):
        self.assertEqual(self.expected.after_success(self.after), [])
        self.assertEqual(self.expected.after_error(self.before), [])
        self.assertEqual(self.expected.after_cut(self.before), [])
        self.assertEqual(list(self.expected.after_second_run(self.after)), [])

    def test_a_file_of_the_user_is_missed(self):
        for check in (self.expected.after_error, self.expected.after_cut):
            self.assertEqual(check(self.tree(without=["user/sign.ps"])), ["removed: user/sign.ps"])
            self.assertEqual(check(self.tree(files={"user/sign.ps": b"%"})),
                             ["damaged: user/sign.ps"])

    def test_an_earlier_result_is_itself_or_the_new_one(self):
        self.assertEqual(self.expected.after_error(self.tree(files={"out/a.pdf": b"draw"})),
                         ["damaged: out/a.pdf"])
        self.assertEqual(self.expected.after_error(self.tree(files={"out/a.pdf": b"earlier"})), [])

    def test_half_a_file_is_seen(self):
        path = f"{PAGE}/page.ppm"
        for check in (self.expected.after_error, self.expected.after_cut):
            self.assertEqual(check(self.tree(files={path: b"pix"})),
                             [f"not whole: {path} (3 of 6 bytes)"])

    def test_a_page_directory_that_lacks_a_file_is_seen(self):
        self.assertEqual(self.expected.after_cut(self.tree(without=[f"{PAGE}/page.ppm"])),
                         [f"half a page: {PAGE} lacks page.ppm"])

    def test_a_working_file_may_outlive_the_power_but_no_error(self):
        now = self.tree(files={"out/.rastrel-7.part": b"dra"})
        self.assertEqual(self.expected.after_cut(now), [])
        self.assertEqual(self.expected.after_error(now), ["left over: out/.rastrel-7.part"])

    def test_a_success_has_its_results(self):
        self.assertEqual(self.expected.after_success(self.tree(without=[f"{PAGE}/page.ppm"]))[-1],
                         f"missing: {PAGE}/page.ppm")

    def test_a_success_has_not_the_earlier_result(self):
        self.assertEqual(self.expected.after_success(self.tree(files={"out/a.pdf": b"earlier"})),
                         ["still the earlier one: out/a.pdf"])

    def test_a_second_run_has_them_too_perhaps_by_another_name(self):
        other = PAGE.replace("sign", "sign-2")
        moved = Tree({path.replace(PAGE, other): data for path, data in self.after.files.items()},
                     {path.replace("sign", "sign-2") for path in self.after.folders})
        self.assertEqual(list(self.expected.after_second_run(moved)), [])
        self.assertIn("no second run gives out/a.pdf",
                      self.expected.after_second_run(self.tree(files={"out/a.pdf": b"earlier"})))


class Messages(unittest.TestCase):
    def test_success_or_one_error_with_its_status(self):
        for status, error in ((0, ""), (1, "Start\nrastrel: disk full\n  log: x\n"),
                              (3, "rastrel: can't read 'x': Input/output error\n")):
            self.assertEqual(list(messages.findings(status, error)), [])

    def test_what_is_not_clear_is_found(self):
        for status, error, finding in (
                (1, "", "no error, but exit status 1"), (1, "rastrel: a\nrastrel: b\n", "2 errors"),
                (2, "rastrel: wrong use\n", "exit status 2"),
                (1, "rastrel: std::bad_alloc\n", "not foreseen: std::"),
                (127, "rastrel: a\n", "exit status 127")):
            self.assertEqual(list(messages.findings(status, error)), [finding])


class KnownFaults(unittest.TestCase):
    def test_the_table_is_well_formed(self):
        known_faults.read()

    def test_a_fault_is_known_by_its_call_and_its_finding(self):
        call = injections.Call("0", "rastrel", "read", 3, "SLOT/user/sign.ps")
        case = injections.Case(scenes.SCENES[0], call, "EIO")
        fault = known_faults.KnownFault("print", "rastrel", "read", "*/sign.ps", "EIO", "2 errors",
                                        "a reason")
        self.assertFalse(known_faults.covers([fault], case, "no end"))
        self.assertFalse(fault.seen)
        self.assertTrue(known_faults.covers([fault], case, "2 errors"))
        self.assertTrue(fault.seen)
        self.assertEqual(known_faults.candidates(fault, [case]), [case])
        self.assertEqual(known_faults.candidates(fault, []), [])


if __name__ == "__main__":
    unittest.main()
