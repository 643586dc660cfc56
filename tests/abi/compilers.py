"""The compilers that read the headers, and how they are called."""

import functools
import pathlib
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
MINGW_GCC = "x86_64-w64-mingw32-g++-posix"


class CompilerError(Exception):
    """A compiler that did not take what it was given."""


def run(command, text=""):
    """Runs a compiler over `text` on its standard input; gives its output."""
    result = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    if result.returncode:
        raise CompilerError(f"{' '.join(map(str, command))}\n{result.stderr}")
    return result.stdout


@functools.lru_cache(maxsize=None)
def mingw_headers():
    """Folders of the headers of MinGW's GCC, which Clang does not find alone."""
    told = subprocess.run([MINGW_GCC, "-E", "-v", "-x", "c++", "/dev/null"], text=True,
                          capture_output=True, check=True).stderr
    folders = told.split("search starts here:")[-1].split("End of search list")[0].split()
    # GCC's own folder: Clang has headers of those names itself.
    return [folder for folder in folders
            if not folder.endswith(("-posix/include", "/include-fixed"))]


def clang(target):
    """Clang for a target, over the headers that it has for it."""
    command = ["clang++", "-x", "c++", "-"]
    if target.startswith("msvc"):
        # Nobody can ship Microsoft's headers: what stands in is enough to lay
        # out and to decorate, not to link.
        machine = {"msvc-x64": "x86_64", "msvc-x86": "i686"}[target]
        command += [f"--target={machine}-pc-windows-msvc", "-nostdinc",
                    "-isystem", HERE / "stdlib"]
    elif target == "mingw":
        command += ["--target=x86_64-w64-mingw32", "-nostdinc++"]
        for folder in mingw_headers():
            command += ["-isystem", folder]
    return command


TARGETS = ("msvc-x64", "msvc-x86", "mingw", "linux")
