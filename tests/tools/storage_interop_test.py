#!/usr/bin/env python3
"""Compound files exchanged with two independent implementations:
 - a tree written through tarn.dll (tarn stg add) is read back by olefile
   (Debian's python3-olefile), every stream byte for byte, the big one beyond
   the mini stream (4096 bytes and more);
 - a tree that libgsf's `gsf createole` (Debian's libgsf-bin) makes from a
   directory is listed and read through tarn.dll (tarn stg list, cat).

usage: storage_interop_test.py TARN_EXE WINE_RUN GSF"""
import json
import os
import random
import subprocess
import sys
import tempfile

import olefile

if len(sys.argv) != 4:
    sys.exit(__doc__)
TARN, WINE_RUN, GSF = (os.path.abspath(a) for a in sys.argv[1:])

# The prefix of the build tree that holds sdk-consumer/tarn.exe.
os.environ.setdefault("TARN_WINE_ROOT",
                      os.path.join(os.path.dirname(os.path.dirname(TARN)), "wine"))

FAILURES = []


def check(ok, what):
    print(("ok   " if ok else "FAIL ") + what)
    if not ok:
        FAILURES.append(what)


def tarn(work, *args):
    r = subprocess.run([WINE_RUN, TARN, "stg", *args], cwd=work, capture_output=True, timeout=120)
    check(r.returncode == 0, f"tarn stg {' '.join(args)}: exit code {r.returncode} "
          + r.stderr.decode("utf-8", "replace").strip())
    return r.stdout


def main():
    # One Wine server for every start (Wine otherwise starts one each time);
    # it ends on its own 10 s after the last program, since other tests share
    # the prefix.
    server = dict(os.environ, WINEPREFIX=os.path.join(os.environ["TARN_WINE_ROOT"], "prefix"))
    quiet = dict(stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    subprocess.run([WINE_RUN, TARN, "--version"], **quiet)  # makes the prefix
    subprocess.run(["/usr/lib/wine/wineserver", "-p10"], env=server, **quiet)
    exchange()
    print(f"{len(FAILURES)} failures")
    return 1 if FAILURES else 0


def exchange():
    rng = random.Random(13)
    streams = {  # path in the compound file: bytes
        "Big": rng.randbytes(70000),  # a regular stream: sectors of the file itself
        "Docs/Small": rng.randbytes(100),  # the mini stream
        "Docs/Deep/Edge": rng.randbytes(4096),  # the first size outside the mini stream
        "Docs/Deep/Empty": b"",
    }
    with tempfile.TemporaryDirectory(dir=os.path.dirname(TARN)) as work:
        for n, (path, data) in enumerate(streams.items()):
            with open(os.path.join(work, f"src{n}"), "wb") as f:
                f.write(data)
            tarn(work, "add", "lib.stg", path, f"src{n}")
        ole = olefile.OleFileIO(os.path.join(work, "lib.stg"))
        check(sorted("/".join(p) for p in ole.listdir()) == sorted(streams),
              "olefile finds every stream the library wrote, no other")
        for path, data in streams.items():
            check(ole.openstream(path).read() == data, f"olefile reads {path} byte for byte")
        ole.close()

        tree = os.path.join(work, "tree")
        files = {"tree/big.bin": rng.randbytes(9000), "tree/sub/small.txt": b"small\n",
                 "tree/sub/deeper/edge.bin": rng.randbytes(4096)}
        for path, data in files.items():
            os.makedirs(os.path.dirname(os.path.join(work, path)), exist_ok=True)
            with open(os.path.join(work, path), "wb") as f:
                f.write(data)
        subprocess.run([GSF, "createole", "gsf.ole", "tree"], cwd=work, check=True,
                       capture_output=True)
        listed = json.loads(tarn(work, "list", "--json", "gsf.ole") or "[]")
        check({r["path"]: r["size"] for r in listed if r["type"] == "stream"}
              == {p: len(d) for p, d in files.items()}, "the library lists gsf's streams and sizes")
        check({r["path"] for r in listed if r["type"] == "storage"}
              == {"tree", "tree/sub", "tree/sub/deeper"}, "the library lists gsf's storages")
        for n, (path, data) in enumerate(files.items()):
            tarn(work, "cat", "gsf.ole", path, "-o", f"out{n}")
            with open(os.path.join(work, f"out{n}"), "rb") as f:
                check(f.read() == data, f"the library reads gsf's {path} byte for byte")


if __name__ == "__main__":
    sys.exit(main())
