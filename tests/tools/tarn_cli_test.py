#!/usr/bin/env python3
"""Runs tarn.exe under Wine with good input, bad input and --help, a row a
case: the arguments, the exit code, what stdout and stderr must match (regular
expressions, searched), and for --json a check of the parsed output.

usage: tarn_cli_test.py TARN_EXE WINE_RUN VERSION"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

if len(sys.argv) != 4:
    sys.exit(__doc__)
TARN, WINE_RUN, VERSION = (os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]),
                        sys.argv[3])

USAGE = r"^tarn[a-z0-9 ]*: .+\nRun 'tarn[a-z0-9 ]* --help' for more information\.\n$"
FAILED = r"^tarn {}: {}: [^\n]+\n$"  # one line: command, operand, the system's text
BAD = "^$"  # nothing on stdout


def records(check):
    """A --json row: stdout parses as a list of records that satisfy check."""
    return lambda out: check(json.loads(out))


ROWS = [
    # arguments, exit code, stdout, stderr, check of the JSON output
    (["--help"], 0, r"Usage: tarn .*crc32", "^$", None),
    (["angle", "--help"], 0, r"Usage: tarn angle .*--decimals", "^$", None),
    (["--version"], 0, rf"^tarn\.exe {VERSION}\ntarn\.dll {VERSION}\n$", "^$", None),
    ([], 2, BAD, r"a command is required\n" , None),
    (["bogus"], 2, BAD, r"^tarn: .*bogus\n", None),
    (["--bogus"], 2, BAD, r"^tarn: .*--bogus\n", None),
    # crc32: files, standard input, failures
    (["crc32", "check.txt", "-"], 0, r"^cbf43926  check\.txt\ncbf43926  -\n$", "^$", None),
    (["crc32", "--", "-"], 0, r"^cbf43926  -\n$", "^$", None),
    (["crc32", "--json", "check.txt"], 0, None, "^$",
     records(lambda r: r == [{"crc32": "cbf43926", "file": "check.txt"}])),
    (["crc32", "missing.txt", "check.txt"], 1, r"^cbf43926  check\.txt\n$",
     FAILED.format("crc32", r"missing\.txt"), None),
    (["crc32", "adir"], 1, BAD, FAILED.format("crc32", "adir"), None),
    (["crc32"], 2, BAD, r"^tarn crc32: file is required\n", None),
    # angle: numbers, D:M:S, bad values
    (["angle", "90", "deg", "--json"], 0, None, "^$",
     records(lambda r: abs(r[0]["radians"] - 1.5707963267948966) < 1e-15
             and r[0]["gon"] == 100 and r[0]["eDmsAligned"] == " 90  0  0.0000")),
    (["angle", "-12:30:0", "dms", "-d", "0"], 0, r"degrees +-12\.5\n", "^$", None),
    (["angle", "-1.5", "rad"], 0, r"radians +-1\.5\n", "^$", None),
    (["angle", "--", "-1", "deg"], 0, r"eDmsAligned  -  1  0  0\.0000\n", "^$", None),
    (["angle", "1e400", "deg"], 2, BAD, r"not a finite number: 1e400\n", None),
    (["angle", "abc", "deg"], 2, BAD, r"not a finite number: abc\n", None),
    (["angle", "12:30", "dms"], 2, BAD, r"not D:M:S", None),
    (["angle", "1", "xx"], 2, BAD, r"^tarn angle: unit: xx not in", None),
    (["angle", "1"], 2, BAD, r"^tarn angle: unit is required\n", None),
    (["angle", "1", "deg", "-d", "16"], 2, BAD, r"decimals: Value 16 not in range 0 to 15", None),
    # dms, gccc: carries, range checks
    (["dms", "10.999999", "deg", "2", "--json"], 0, None, "^$",
     records(lambda r: (r[0]["sign"], r[0]["degrees"], r[0]["minutes"], r[0]["seconds"])
             == (1, 11, 0, 0))),
    (["gccc", "1", "rad", "--json"], 0, None, "^$",
     records(lambda r: abs(r[0]["decimalGon"] - 63.66197723675813) < 1e-9)),
    (["dms", "12", "deg", "abc"], 2, BAD, r"^tarn dms: decimals: ", None),
    (["dms", "12", "deg", "99999"], 2, BAD, r"decimals: Value 99999 not in range", None),
    (["dms", "12", "deg", "2", "2"], 2, BAD, r"wrap: Value 2 not in range 0 to 1", None),
    (["dms", "12", "deg", "2", "1", "extra"], 2, BAD, r"not expected: extra\n", None),
    (["gccc", "1e400"], 2, BAD, r"^tarn gccc: value: ", None),
    # version: tarn.dll, missing files, directories
    (["version", "--json"], 0, None, "^$",
     records(lambda r: r[0]["FileVersion"] == VERSION and r[0]["OriginalFilename"] == "tarn.dll"
             and "system" in r[1])),
    (["version", "missing.dll"], 1, BAD, FAILED.format("version", r"missing\.dll"), None),
    (["version", "adir"], 1, BAD, r"^tarn version: adir: a directory, not a module\n$", None),
    (["version", "check.txt"], 1, BAD,
     r"^tarn version: check\.txt: no version resource with a translation table\n$", None),
    (["version", "a", "b"], 2, BAD, r"not expected: b\n", None),
    # path rules
    (["path", "--json", r"C:\a\b.txt", r"c:\A\B.TXT", "con"], 0, None, "^$",
     records(lambda r: r[1]["samePath"] and not r[2]["samePath"] and r[2]["reservedName"])),
    (["path"], 2, BAD, r"path is required\n", None),
    # directories: every entry, also of a drive root
    (["dir", "--json", "adir"], 0, None, "^$",
     records(lambda r: {e["name"]: e["size"] for e in r if e["attributes"][0] == "-"}
             == {"inner.txt": 5})),
    (["dir", "--json", "C:\\"], 0, None, "^$",
     records(lambda r: {"windows", "users"} <= {e["name"].lower() for e in r})),
    (["dir", "missing"], 1, BAD, FAILED.format("dir", "missing"), None),
    (["dir", "check.txt"], 1, BAD, r"^tarn dir: check\.txt: not a directory\n$", None),
    # links (Wine's volumes have no reparse points) and free space
    (["link", "C:\\newlink", "adir"], 1, BAD,
     r"^tarn link: C:\\newlink: no link to adir can be made", None),
    (["link", "--try", "C:\\newlink", "C:\\"], 1, BAD, r"^tarn link: C:\\newlink: ", None),
    (["df", "--json", "C:\\x", "c:", "J:\\"], 1, None, FAILED.format("df", r"J:\\"),
     records(lambda r: len(r) == 2 and r[0]["mebibytes"] == r[0]["bytes"] >> 20 > 0)),
    (["df", "adir"], 1, BAD, r"^tarn df: adir: no drive letter in the path\n$", None),
    # known folders and temporary files
    (["folder", "--json", "fonts", "0x14"], 0, None, "^$",
     records(lambda r: r[0] == r[1] and r[0]["csidl"] == 20 and r[0]["path"].endswith("\\"))),
    (["folder", "nonsense"], 2, BAD, r"^tarn folder: folder: ", None),
    (["temp", "--json", "abc"], 0, None, "^$",
     records(lambda r: r[0]["directory"] and "abc" in r[0]["freshName"])),
    # resources: tarn.dll's own, one written to a file; programs started and waited for
    (["resource", "--json", "tarn.dll"], 0, None, "^$",
     records(lambda r: {"type": "PIFFILE", "name": "#103", "size": 967} in r)),
    (["resource", "tarn.dll", "PIFFILE", "#103", "out.pif"], 0, "^$", "^$",
     lambda out: os.path.getsize(os.path.join(WORK, "out.pif")) == 967),
    (["resource", "tarn.dll", "PIFFILE", "999"], 1, BAD, FAILED.format("resource", "PIFFILE 999"),
     None),
    (["resource", "missing.dll"], 1, BAD, FAILED.format("resource", r"missing\.dll"), None),
    (["resource", "tarn.dll", "PIFFILE"], 2, BAD, r"name \(with a type\) is required", None),
    (["run", "cmd", "/c", "exit", "7"], 0, r"^7\n$", "^$", None),
    (["run", "--json", "cmd", "/c", "exit 0"], 0, None, "^$",
     records(lambda r: r == [{"exitCode": 0}])),
    (["run", "--wait", "1", "cmd", "/c", "exit", "3"], 0, r"^timeout\n$", "^$", None),
    (["run", "missing.exe", "a"], 1, BAD, FAILED.format("run", r"missing\.exe"), None),
    (["run"], 2, BAD, r"COMMAND is required", None),
    (["run", "--show", "12", "cmd"], 2, BAD, r"show: Value 12 not in range", None),
    # structured storage: a file added as a stream, failures of open and of a path
    (["stg", "add", "new.stg", "A/B/check", "check.txt"], 0, "^$", "^$",
     lambda out: open(os.path.join(WORK, "new.stg"), "rb").read(8) == bytes.fromhex("d0cf11e0a1b11ae1")),
    (["stg", "list", "missing.stg"], 1, BAD, FAILED.format("stg", r"missing\.stg"), None),
    (["stg", "cat", "check.txt", "A/x"], 1, BAD, FAILED.format("stg", r"check\.txt"), None),
    (["stg", "add", "new2.stg", "/", "check.txt"], 2, BAD, r"path: names no stream: /\n", None),
    (["stg", "list"], 2, BAD, r"file is required\n", None),
    # access-control lists and the access probe
    (["acl", "show", "CURRENT_USER\\Software"], 0,
     r"S-1-5-32-544  BUILTIN\\Administrators  allow  0x[0-9a-f]{8}  0x[0-9a-f]{8}\n", "^$", None),
    (["acl", "show", "--json", "check.txt"], 0, None, "^$",
     records(lambda r: {"sid": "S-1-1-0", "name": "Everyone", "type": "allow"}.items()
             <= next(e for e in r if e["sid"] == "S-1-1-0").items())),
    (["acl", "deny", "locked.txt", "0x221", "0x40000000"], 0, "^$", "^$",
     lambda out: os.stat(os.path.join(WORK, "locked.txt")).st_mode & 0o222 == 0),
    (["acl", "grant", "missing.txt", "0x221", "0x80000000"], 1, BAD,
     r"^tarn acl: missing\.txt: the entry could not be merged into the list\n$", None),
    (["acl", "show", "missing.txt"], 1, BAD, FAILED.format("acl", r"missing\.txt"), None),
    (["acl", "grant", "check.txt"], 2, BAD, r"RID and MASK \(with grant\) is required", None),
    (["acl", "show", "check.txt", "0x221"], 2, BAD, r"takes no RID or MASK", None),
    (["acl", "allow", "check.txt"], 2, BAD, r"^tarn acl: action: allow not in", None),
    (["access", "check.txt"], 0, r"^check\.txt  granted\n$", "^$", None),
    (["access", "adir", "write"], 0, r"^adir  denied\n$", "^$", None),
    (["access", "--json", "nodir\\x.txt"], 0, None, "^$",
     records(lambda r: r == [{"path": "nodir\\x.txt", "verdict": "unavailable"}])),
    (["access", "check.txt", "exec"], 2, BAD, r"^tarn access: access: exec not in", None),
    # play: standard input is a pipe, so it waits for the end; Wine here has no
    # sound device, so a WAV's play ends with MCI's failure notification (its
    # audio driver may print to stderr first)
    (["play", "tone.wav"], 1, BAD, r"tarn play: tone\.wav: the device failed during playback\n$",
     None),
    (["play", "missing.wav"], 1, BAD, FAILED.format("play", r"missing\.wav"), None),
    (["play", "a tone.wav"], 1, BAD, r"tarn play: a tone\.wav: MCI takes no blank in a path\n$",
     None),
    (["play"], 2, BAD, r"^tarn play: file is required\n", None),
]

# tarn.exe copied alone into a folder, without tarn.dll: Wine's loader error
# names the missing DLL (scripts/wine-run keeps it visible).
ALONE = (["--version"], 53, BAD,
         r"err:module:import_dll Library tarn\.dll \(which is needed by [^\n]*tarn\.exe.*not found",
         None)


WORK = None  # the cases' working directory


def run(work, args, program=TARN):
    r = subprocess.run([WINE_RUN, program, *args], cwd=work, input=b"123456789",
                       capture_output=True, timeout=120)
    return (r.returncode, r.stdout.decode("utf-8", "replace").replace("\r\n", "\n"),
            r.stderr.decode("utf-8", "replace").replace("\r\n", "\n"))


def main():
    failures = 0
    # The prefix of scripts/wine-run for the build tree that holds
    # sdk-consumer/tarn.exe, shared with the other tests of that tree.
    os.environ.setdefault("TARN_WINE_ROOT",
                          os.path.join(os.path.dirname(os.path.dirname(TARN)), "wine"))
    server = dict(os.environ, WINEPREFIX=os.path.join(os.environ["TARN_WINE_ROOT"], "prefix"))
    global WORK
    with tempfile.TemporaryDirectory(dir=os.path.dirname(TARN)) as work:
        WORK = work
        with open(os.path.join(work, "check.txt"), "w") as f:
            f.write("123456789")
        with open(os.path.join(work, "locked.txt"), "w") as f:
            f.write("locked")
        for name in ("tone.wav", "a tone.wav"):  # 0.2 s of 500 Hz, 8 kHz 8-bit mono PCM
            with open(os.path.join(work, name), "wb") as f:
                f.write(b"RIFF" + (1636).to_bytes(4, "little") + b"WAVEfmt " + bytes.fromhex(
                    "10000000 0100 0100 401f0000 401f0000 0100 0800".replace(" ", ""))
                    + b"data" + (1600).to_bytes(4, "little") + bytes([0xC0] * 8 + [0x40] * 8) * 100)
        os.makedirs(os.path.join(work, "adir"))
        with open(os.path.join(work, "adir", "inner.txt"), "w") as f:
            f.write("12345")
        # Wine's own background processes outlive the program that starts them
        # and keep its output open: they are started with none.
        quiet = dict(stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                     stderr=subprocess.DEVNULL)
        # A server that outlives short gaps between the cases keeps them
        # running (unless another test's server is up already, which
        # serves as well). It ends on its own: other tests share the prefix.
        subprocess.run([WINE_RUN, TARN, "--version"], **quiet)  # makes the prefix
        subprocess.run(["/usr/lib/wine/wineserver", "-p10"], env=server, **quiet)
        subprocess.run([WINE_RUN, TARN, "--version"], **quiet)
        with ThreadPoolExecutor(4) as pool:
            results = list(pool.map(lambda row: run(work, row[0]), ROWS))
        os.makedirs(os.path.join(work, "alone"))
        results.append(run(work, ALONE[0], shutil.copy(TARN, os.path.join(work, "alone"))))
        for (args, code, out_re, err_re, check), (returncode, out, err) in zip(ROWS + [ALONE],
                                                                               results):
            problems = []
            if returncode != code:
                problems.append(f"exit code {returncode}, expected {code}")
            for name, text, regex in (("stdout", out, out_re), ("stderr", err, err_re)):
                if regex is not None and not re.search(regex, text, re.S):
                    problems.append(f"{name} does not match {regex!r}")
            if check:
                try:
                    if not check(out):
                        problems.append("the JSON output fails its check")
                except (ValueError, KeyError, IndexError, TypeError, OSError) as e:
                    problems.append(f"the JSON output cannot be read: {e!r}")
            status = "ok  " if not problems else "FAIL"
            print(f"{status} tarn {' '.join(args)}")
            if problems:
                failures += 1
                for p in problems:
                    print(f"     {p}")
                print("     stdout: " + out.replace("\n", "\n             "))
                print("     stderr: " + err.replace("\n", "\n             "))
    print(f"{len(ROWS) + 1 - failures} of {len(ROWS) + 1} cases pass")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
