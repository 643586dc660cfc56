"""A program, the library and what else an installation has, in a directory of its
own, and hxsso-doctor run on it."""

import contextlib
import ctypes
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from shards import CANNOT_RUN, CannotRun, Skipped, apart, link, skip  # noqa: E402,F401

WINE_I386 = pathlib.Path(__file__).resolve().parents[3] / ".deps/wine-i386/i386-windows"
CAN_WORK = "sign-in can work"
NOT_LOADED = "nothing wrong found; the plugin was not loaded (--load loads it)"
BASE = pathlib.Path(__file__).resolve().parent / "base"
LOCATION_KEY = "HKLM\\SOFTWARE\\Halvorix\\Halvorix HxSSO"
# What makes a file's permissions count for root too: CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH.
PR_CAPBSET_DROP, CAPABILITIES = 24, (1, 2)


def obey_permissions():
    """In the child, before it becomes the doctor: root is denied what others are."""
    for capability in CAPABILITIES:
        ctypes.CDLL(None).prctl(PR_CAPBSET_DROP, capability, 0, 0, 0)


def environment_with(variables):
    """This process's without what would change the report."""
    bare = dict(os.environ, LC_ALL="C.UTF-8")
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "NO_COLOR", "COLUMNS"):
        bare.pop(name, None)
    return bare | variables


def machine(file):
    """For which machine a module for Windows is, by its header."""
    with open(file, "rb") as stream:
        header = stream.read(4096)
    at = int.from_bytes(header[60:64], "little") + 4
    return int.from_bytes(header[at : at + 2], "little")


class Build:
    """Where the build's programs and modules lie, and how they are run."""

    def __init__(self, folder, emulator):
        self.folder = pathlib.Path(os.path.abspath(folder))
        self.emulator = [os.path.abspath(word) if os.path.exists(word) else word for word in emulator]
        self.is_windows = (self.folder / "hxsso-doctor.exe").exists()
        self.starts_slowly = self.is_windows or "HXSSO_INSTRUMENTED" in os.environ
        exe = ".exe" if self.is_windows else ""
        # On a 64-bit Windows a 32-bit process reads the other key.
        is_wow64 = self.is_windows and machine(self.folder / "hxsso-doctor.exe") == 0x14C
        keys = ["modulePath", "modulePathWoW64"]
        self.path_key, self.other_path_key = reversed(keys) if is_wow64 else keys
        self.architecture = "x86" if is_wow64 else "x86-64"
        # The system's tool, in the view of the registry that such a process has.
        self.reg = str(WINE_I386 / "reg.exe") if is_wow64 else "reg"
        self.doctor = "hxsso-doctor" + exe
        self.loader = "hxsso-plugin-loader" + exe
        self.host = "asking-host" + exe
        self.row = "doctor-in-a-row" + exe
        self.program = "Program" + exe
        self.module = ".dll" if self.is_windows else ".so"
        self.library = "HxSSOServices.dll" if self.is_windows else "libHxSSOServices.so.10"
        self.library_name = "HxSSOServices.dll" if self.is_windows else "libHxSSOServices.so"
        self.decorated = (
            "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ"
            if self.is_windows
            else "_Z19GetSSOClientFactoryv"
        )

    def spelled(self, path):
        """A path as the library spells it."""
        return ("Z:" if self.is_windows else "") + pathlib.Path(path).as_posix()


class Ended:
    def __init__(self, process):
        self.status = process.returncode
        self.bytes = process.stdout
        self.output = process.stdout.decode("utf-8")
        self.errors = process.stderr.decode("utf-8")
        # By line feeds alone: a name may hold what Python takes for a line end.
        self.lines = self.output.replace("\r\n", "\n").rstrip("\n").split("\n")

    @property
    def last(self):
        return self.lines[-1]

    @property
    def problems(self):
        """What is wrong, what to do about it, and the last line."""
        kinds = ("wrong: ", "warning: ", "Fix: ")
        return [line for line in self.lines if line.startswith(kinds)] + [self.last]

    @property
    def document(self):
        return json.loads(self.output)


class Row:
    """The doctor, one run after the other in one process: a start costs more than what it
    does. In a folder of its own: what lies beside a program is found by it."""

    def __init__(self, build, folder, **environment):
        self.build = build
        self.folder = folder
        self.environment = environment_with(environment)
        self.process = None

    def start(self):
        for name in (self.build.row, self.build.loader):
            link(self.build.folder / name, self.folder / name)
        self.errors, self.known = tempfile.TemporaryFile(), 0
        self.process = subprocess.Popen(
            [*self.build.emulator, str(self.folder / self.build.row)],
            env=self.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=self.errors,
            preexec_fn=None if self.build.is_windows else obey_permissions,
        )

    def run(self, directory, variables, *arguments):
        """There, with these variables of the environment."""
        if self.process is None:
            self.start()
        request = {"directory": directory, "environment": variables, "arguments": arguments}
        with contextlib.suppress(BrokenPipeError):  # one that has ended is told below
            self.process.stdin.write(json.dumps(request).encode("utf-8") + b"\n")
            self.process.stdin.flush()
        output = b""
        for line in self.process.stdout:
            if line.startswith(b"exit status "):
                return Ended(subprocess.CompletedProcess(
                    arguments, int(line.split()[-1]), output, self.told()))
            output += line
        status, self.process = self.process.wait(), None
        if self.build.emulator and status == CANNOT_RUN:
            raise CannotRun(self.told().decode())
        raise AssertionError(f"the doctor ended with {status}: {output!r} {self.told()!r}")

    def told(self):
        """What it has written as errors since that was asked."""
        self.errors.seek(self.known)
        written = self.errors.read()
        self.known += len(written)
        return written

    def close(self):
        if self.process is None:
            return
        self.process.stdin.close()
        assert self.process.wait() == 0, "the doctor did not end well"
        self.process.stdout.close()
        self.errors.close()


class Installation:
    """app/ has the program and the library, server/ the server application and its
    files, work/ is the current directory. Closed at the end, for what it has left in the
    system."""

    def __init__(self, build, root, row=None):
        self.build = build
        self.root = pathlib.Path(os.path.realpath(root))
        self.row = row
        self.variables, self.denied, self.has_location = {}, [], False
        self.in_windows = []
        self.program = build.spelled(self.root / "app" / build.program)
        for folder in ("app", "server", "work", "doctor", "home", "xdg"):
            (self.root / folder).mkdir(parents=True)
        self.set_script({})
        # On its own: what lies beside a program is found by it.
        self.place("doctor/" + build.doctor, build.doctor)
        self.place("doctor/" + build.loader, build.loader)
        self.place("app/" + build.program, build.host)
        self.place("app/" + build.library, build.library)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for relative in self.denied:
            self.path(relative).chmod(0o755)
        if self.has_location and self.build.is_windows:
            self.registry("delete", LOCATION_KEY, "/f")
        for folder in self.in_windows:
            shutil.rmtree(folder)

    def registry(self, *words):
        subprocess.run([*self.build.emulator, self.build.reg, *words], check=True, capture_output=True)

    def leave_location(self, directory):
        """As the server application's installation does."""
        self.has_location = True
        if self.build.is_windows:
            self.registry("add", LOCATION_KEY, "/v", "Location", "/d", directory, "/f")
        else:
            self.write("xdg/Halvorix/HxSSO/Location", directory + "\n")

    def deny(self, relative):
        if self.build.is_windows and os.geteuid() == 0:
            skip("runs as root, whom Wine denies nothing")
        target = self.path(relative)
        if target.is_file() and target.stat().st_nlink > 1:
            self.replace(relative, target.read_bytes())  # the build's keeps its permissions
        target.chmod(0)
        self.denied.append(relative)

    def texts(self):
        return {
            "{root}": self.build.spelled(self.root),
            "{module}": self.build.module,
            "{library}": self.build.library,
            "{library name}": self.build.library_name,
            "{program}": self.build.program,
            "{decorated}": self.build.decorated,
            "{modulePath}": self.build.path_key,
            "{modulePathWoW64}": self.build.other_path_key,
            "{architecture}": self.build.architecture,
            "{portion}": "section" if self.build.is_windows else "segment",
        }

    def filled(self, text):
        for name, value in self.texts().items():
            text = text.replace(name, value)
        return text

    def unfilled(self, text):
        for name, value in sorted(self.texts().items(), key=lambda item: -len(item[1])):
            text = text.replace(value, name)
        return text

    def path(self, relative):
        return self.root / self.filled(relative)

    def write(self, relative, content):
        """A file whose placeholders are filled in, whatever its encoding."""
        if isinstance(content, str):
            content = content.encode("utf-8")
        return self.replace(relative, self.filled(content.decode("latin-1")).encode("latin-1"))

    def replace(self, relative, content):
        """A new file in the place of one that may be a link to the build's."""
        target = self.path(relative)
        target.parent.mkdir(parents=True, exist_ok=True)
        target.unlink(missing_ok=True)
        target.write_bytes(content)
        target.chmod(0o755)
        return self

    def place(self, relative, name):
        """A file of the build."""
        link(self.build.folder / self.filled(name), self.path(relative))
        return self

    def place_in_windows(self, relative, name):
        """The same in a folder of its own below one of the system's, until the end."""
        name, relative = self.filled(name), self.filled(relative)
        prefix = os.environ.get("HXSSO_WINEPREFIX", str(WINE_I386.parents[1] / "wine"))
        if self.build.architecture == "x86":
            prefix += "-x86"
            relative = relative.replace("system32/", "syswow64/")
        target = pathlib.Path(prefix, "drive_c/windows", relative)
        if not target.parents[1].is_dir():
            skip("this is not Wine with a prefix of its own")
        target.parent.mkdir(exist_ok=True)
        self.in_windows.append(target.parent)
        shutil.copy(self.build.folder / name, target)

    def turn_architecture(self, relative):
        """Makes it a module for ARM, by its header."""
        data = bytearray(self.path(relative).read_bytes())
        is_pe = data[:2] == b"MZ"
        at = int.from_bytes(data[60:64], "little") + 4 if is_pe else 18
        data[at : at + 2] = (0xAA64 if is_pe else 183).to_bytes(2, "little")
        return self.replace(relative, bytes(data))

    def set_up(self, case):
        """What is whole, and over it what the folder of a case tells; how the doctor is
        started then."""
        self.apply(BASE)
        about = self.apply(case)
        for relative in about.get("deny", []):
            self.deny(relative)
        if "location" in about:
            self.leave_location(self.filled(about["location"]))
        self.set_script(about.get("script", {}))
        self.variables = dict(about.get("environment", {}))
        if "path" in about:
            folders = [self.build.spelled(self.path(folder)) for folder in about["path"]]
            self.variables["WINEPATH"] = ";".join(folders)
        self.program = self.filled(about.get("exe", "{root}/app/{program}"))
        return [self.filled(argument) for argument in about.get("arguments", [])]

    def set_script(self, script):
        """What the recording plugin does."""
        (self.root / "script").write_text(json.dumps(script))

    def apply(self, case):
        about = json.loads((case / "case.json").read_text(encoding="utf-8"))
        system = "windows" if self.build.is_windows else "linux"
        if about.get("system", system) != system:
            skip("this happens on " + about["system"] + " only")
        for relative, name in about.get("copy", {}).items():
            self.replace(relative, self.path(name).read_bytes())
        for relative in about.get("remove", []):
            self.path(relative).unlink()
        for relative, name in about.get("rename", {}).items():
            self.path(name).parent.mkdir(parents=True, exist_ok=True)
            os.rename(self.path(relative), self.path(name))
        for relative in about.get("folders", []):
            self.path(relative).mkdir(parents=True)
        for file in sorted(case.rglob("*")):
            relative = file.relative_to(case)
            if file.is_file() and len(relative.parts) > 1:
                self.write(relative.as_posix(), file.read_bytes())
        for relative in about.get("empty", []):
            self.write(relative, "")
        for relative, content in about.get("files", {}).items():
            self.write(relative, content)
        for relative, name in about.get("place", {}).items():
            self.place(relative, name + self.build.module)
        for relative, name in about.get("windowsFolder", {}).items():
            self.place_in_windows(relative, name + self.build.module)
        for relative, size in about.get("cut", {}).items():
            self.replace(relative, self.path(relative).read_bytes()[:size])
        for relative, (before, after) in about.get("patch", {}).items():
            data = self.path(relative).read_bytes()
            assert len(before) == len(after) and before.encode() in data, before
            self.replace(relative, data.replace(before.encode(), after.encode()))
        for relative in about.get("otherArchitecture", []):
            self.turn_architecture(relative)
        for relative, changes in about.get("edit", {}).items():
            self.edit(relative, changes)
        for relative, encoding in about.get("encode", {}).items():
            text = self.path(relative).read_text(encoding="utf-8")
            self.replace(relative, text.encode(encoding))
        return about

    def edit(self, relative, changes):
        """Each first text by the second one, once."""
        text = self.path(relative).read_text(encoding="utf-8")
        for before, after in changes:
            assert self.filled(before) in text, before
            text = text.replace(self.filled(before), self.filled(after), 1)
        self.write(relative, text)

    def environment(self, changes=None):
        return environment_with({**self.own_variables(), **self.variables, **(changes or {})})

    def own_variables(self):
        return {
            "HOME": str(self.root / "home"),
            "XDG_CONFIG_DIRS": str(self.root / "xdg"),
            "HXSSO_PLUGIN_SCRIPT": self.build.spelled(self.root / "script"),
            "HXSSO_PLUGIN_RECORD": self.build.spelled(self.root / "record"),
        }

    def command(self, *arguments):
        return [*self.build.emulator, str(self.root / "doctor" / self.build.doctor), *arguments]

    def run(self, *arguments, environment=None):
        """The doctor, with these arguments and no other."""
        process = subprocess.run(
            self.command(*arguments),
            cwd=self.root / "work",
            env=self.environment(environment),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            timeout=100,
            check=False,
            preexec_fn=obey_permissions if self.denied else None,
        )
        if self.build.emulator and process.returncode == CANNOT_RUN:
            raise CannotRun(process.stderr.decode())
        assert process.stdout or process.stderr, f"says nothing; status {process.returncode}"
        return Ended(process)

    def in_a_row(self, *arguments):
        """The same in a process that has done so before."""
        directory = self.build.spelled(self.root / "work")
        return self.row.run(directory, self.own_variables(), *arguments)

    def diagnose(self, *arguments, environment=None):
        """The doctor on the program in app/, or on the one that the case names, if any."""
        if not self.program:
            return self.run(*arguments, environment=environment)
        arguments = ["--exe", self.program, *arguments]
        if self.row and self.build.starts_slowly and not (environment or self.variables):
            return self.in_a_row(*arguments)
        return self.run(*arguments, environment=environment)
