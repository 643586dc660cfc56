"""Programs that do not start, or not with the library."""

import json
import os
import re
import shlex
import shutil
import subprocess

import pathlib

import rig
import harness
from harness import elf, line_of, skip


def rewritten(place, change):
    """The program, changed; it may have been a link to the build's."""
    name = "app/" + place.build.program
    place.replace(name, change(place.path(name).read_bytes()))
    return place.path(name)


def LoaderOfTheProgramIsMissing(test):
    if test.build.is_windows:
        skip("programs for Windows name no loader")
    place = test.whole()
    data = place.path("app/" + test.build.program).read_bytes()
    loader = re.search(rb"/lib[\w/.-]*/ld-[\w.-]*(?=\0)", data)[0]
    for other, why in (
        (loader[:-1] + b"9", "does not exist"),
        (b"/usr".ljust(len(loader), b"/"), "is a folder, not a file"),
        (b"/etc/passwd".rjust(len(loader), b"/"), f"is not one for {test.build.architecture}"),
    ):
        program = rewritten(place, lambda data: data.replace(loader + b"\0", other + b"\0"))
        try:
            subprocess.run([program], check=False)
            raise AssertionError("it starts")
        except OSError as error:
            print(error)
        ended = place.diagnose("--load")
        assert ended.status == 1 and ended.last == (
            f"the program {program} does not start: the loader that it names, {other.decode()}, "
            + why), ended.last
        line_of(ended, "Fix: install the program that is built for this system, or its loader")
        rewritten(place, lambda _: data)
    program = rewritten(place, lambda data: data.replace(loader + b"\0", bytes(len(loader) + 1)))
    ended = place.diagnose("--load")
    assert ended.status == 1 and ended.last == (
        f"the program {program} does not start: the name of its loader is empty"), ended.last
    line_of(ended, "Fix: install the program again")


def ProgramThatMayNotBeExecuted(test):
    if test.build.is_windows:
        skip("any file may be executed there")
    place = test.whole()
    program = rewritten(place, lambda data: data)
    program.chmod(0o644)
    ended = place.diagnose("--load")
    assert ended.status == 1 and \
        ended.last == f"the program {program} does not start: its user may not execute it"
    line_of(ended, f"Fix: allow the program's user to execute {program}")
    program.chmod(0o755)
    assert place.diagnose("--load").last == rig.CAN_WORK
    # Its owner may not, everybody else may.
    place.deny("app/" + test.build.program)
    with place:
        program.chmod(0o655)
        ended = place.diagnose("--load")
        assert ended.status == 0 and ended.last == rig.CAN_WORK, ended.last
        line_of(ended, f"warning: the user of this doctor may not execute the program {program}: "
                "what is said here holds for a user who may")
        line_of(ended, f"Fix: allow the program's user to execute {program}, if that one may not "
                "either")


def ProgramWhereNothingIsExecuted(test):
    """There the permissions of the file count for nobody."""
    if test.build.is_windows:
        skip("any file may be executed there")
    if shutil.which("unshare") is None:
        skip("there is no unshare here")
    place = test.whole()
    mounted = place.root / "noexec"
    mounted.mkdir()
    program = mounted / test.build.program
    # The mount ends with the process that made it.
    steps = " && ".join(shlex.join(map(str, step)) for step in (
        ["mount", "-t", "tmpfs", "-o", "noexec", "none", mounted],
        ["cp", *(place.root / "app").iterdir(), mounted],
        ["echo", "mounted"],
    ))
    doctor = shlex.join(place.command("--exe", str(program)))
    ended = subprocess.run(["unshare", "-m", "sh", "-c", f"{steps} && {doctor}"],
                           cwd=place.root / "work", env=place.environment(),
                           stdin=subprocess.DEVNULL, capture_output=True, check=False)
    lines = ended.stdout.decode().splitlines()
    if lines[:1] != ["mounted"]:
        skip("no file system can be mounted here: " + ended.stderr.decode())
    assert ended.returncode == 1 and lines[-1] == (
        f"the program {program} does not start: it lies on a file system that is mounted noexec"
    ), lines
    assert "Fix: install it on a file system that is not mounted noexec" in lines, lines


def ProgramWithoutTheLibrary(test):
    """It may load the library itself, so that nothing more can be said."""
    place = test.whole()
    if test.build.is_windows:
        # One that a system may do without.
        program = rewritten(place, lambda data: data.replace(b"HxSSOServices.dll\0",
                                                             b"ext-ms-win-hx.dll\0"))
    else:
        program = place.path("app/" + test.build.program)
        elf.retag(program, elf.NEEDED, elf.DEBUG, named=test.build.library.encode())
    ended = place.diagnose("--load")
    assert ended.status == 0 and ended.last == rig.CAN_WORK, ended.last
    line_of(ended, f"warning: the program {place.program} does not need "
            f"{test.build.library_name} at its start: what is said here holds only if it loads "
            "the library itself")
    # Whoever names the library knows that it does.
    option = ("--library", test.build.spelled(place.path("app/" + test.build.library)))
    assert place.diagnose("--load", *option).problems == [rig.CAN_WORK]


def ProgramThatLacksAModule(test):
    """Which may be the one that needs the library."""
    place = test.whole()
    name = test.build.library.encode()
    other = name.replace(b"Services", b"Servicez")
    program = rewritten(place, lambda data: data.replace(name + b"\0", other + b"\0"))
    ended = place.diagnose("--load")
    assert ended.status == 1 and ended.last == (
        f"the program {test.build.spelled(program)} does not start: {other.decode()}, which "
        f"{test.build.program} needs, is missing"), ended.last
    assert "does not need" not in ended.output, ended.output


def StaticProgram(test):
    if test.build.is_windows:
        skip("the loader is in each process there")
    place = test.whole()
    program = place.path("app/" + test.build.program)
    for kind, flags in ((3, elf.PIE), (2, 0)):
        program.unlink()
        elf.write(program, kind=kind, flags=flags)
        ended = place.diagnose("--load")
        assert ended.status == 0 and ended.last == rig.CAN_WORK, ended.last
        line_of(ended, f"warning: the program {program} is linked statically, so that no loader "
                f"brings {test.build.library_name} into its process")


def PathsTooLongForTheLibrary(test):
    """It looks into the folder of what it gets to know of its program's path."""
    if not test.build.is_windows:
        skip("paths of any length are read there")
    place = test.whole()
    above = "/".join(["n" * 60] * 5)
    (place.root / above).mkdir(parents=True)
    shutil.move(place.root / "app", place.root / above)
    place.program = test.build.spelled(place.root / above / "app" / test.build.program)
    ended = place.diagnose("--load")
    assert ended.status == 1, ended.output
    for file in (place.program, place.program.replace(test.build.program, test.build.library)):
        line_of(ended, f"wrong: the path {file} is too long for the library, which reads this "
                "of it: " + file[:250])
    assert ended.last.startswith(f"the path {place.program} is too long"), ended.last
    # There it finds all that it looks for.
    read = pathlib.PurePosixPath(next(line for line in ended.lines if "of it: " in line)
                                 .split("of it: Z:")[1]).parent
    shutil.copytree(place.root / "server", read, dirs_exist_ok=True)
    compatible = harness.compatibility(place)
    compatible["ssoClientPlugin"][0][test.build.path_key] = "%ExePath%/plugin"
    place.replace(str(pathlib.Path(read, "SSOVersionCompatibility.config")),
                  json.dumps(compatible).encode())
    ended = place.diagnose("--json")
    asked = subprocess.run([*test.build.emulator, str(place.root / above / "app" / test.build.program)],
                           cwd=place.root / "work", env=place.environment(),
                           stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if b"could not be started" in asked.stdout:
        skip("Wine starts no 32-bit program from such a path")
    found = asked.stderr.decode().splitlines()[1]
    assert found == f"Z:{read}/plugin/RecordingPlugin.dll", found
    assert ended.document["plugin"]["file"] == found, ended.output


def SymbolsOfPreloadedModules(test):
    """They come into the process with the program, unless that is a privileged one."""
    if test.build.is_windows:
        skip("nothing is preloaded there")
    place = test.undeclared_dependency()
    place.place("preloaded/some.so", "PluginDependency.so")
    folder = place.root / "preloaded"
    # A sanitizer wants to be the first.
    options = {"ASAN_OPTIONS": "verify_asan_link_order=0", "LD_LIBRARY_PATH": str(folder)}
    lacks = "needs the symbol UseDependency() [_Z13UseDependencyv], which no module has"
    assert lacks in place.diagnose(environment=options).last
    os.makedirs(folder / "lib/x86_64-linux-gnu")
    os.symlink("../../some.so", folder / "lib/x86_64-linux-gnu/some.so")
    for value in (f"{folder}/some.so", f"/nowhere/other.so:{folder}/some.so", "none.so some.so",
                  f"{folder}/$LIB/some.so", f"{folder}/${{LIB}}/some.so"):
        environment = dict(options, LD_PRELOAD=value)
        ended = place.diagnose("--load", "--verbose", environment=environment)
        line_of(ended, "ok", "load", "loaded")
        assert "the plugin declines" in ended.last, ended.last
    if os.geteuid() != 0:
        return  # only root can give a program to somebody else
    program = rewritten(place, lambda data: data)
    os.chown(program, 65534, 65534)
    program.chmod(0o4755)
    library = ("--library", str(place.path("app/" + test.build.library)))
    ended = place.diagnose(*library, environment=environment)
    if os.statvfs(program).f_flag & os.ST_NOSUID == 0:
        assert lacks in ended.output, ended.output
