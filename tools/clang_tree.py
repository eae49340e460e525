"""The tree as clang sees it, for tools/check_clang and tools/tidy: build/clang holds the compile
commands and the precompiled headers; nothing else is built, since no source includes a generated one."""

import concurrent.futures
import json
import os
import pathlib
import shlex
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
TREE = ROOT / 'build/clang'
OPTIONS = ('-DCMAKE_BUILD_TYPE=Debug', '-DVELMORA_FUZZ=ON', '-DCCACHE_PROGRAM=', '-DCMAKE_AUTOGEN_ORIGIN_DEPENDS=OFF',
           '-DCMAKE_C_COMPILER=clang', '-DCMAKE_CXX_COMPILER=clang++')


def quietly(command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f'{done.stdout}\n{pathlib.Path(sys.argv[0]).name}: {pathlib.Path(command[0]).name} failed')
    return done.stdout


def prepare():
    """Configures, and makes the precompiled headers. Answers the command of each source by its path."""
    quietly([ROOT / 'tools/install_packages', ROOT / 'packaging/debian-packages-checks.txt'])
    headers = ('--target', 'velmora_pch_gui', '--target', 'velmora_pch_widgets')
    quietly([ROOT / 'tools/build', TREE, *headers, *OPTIONS])
    commands = json.loads((TREE / 'compile_commands.json').read_text())
    return {path: shlex.split(entry['command']) for entry in commands
            if (path := pathlib.Path(entry['file'])).suffix == '.cpp' and not path.is_relative_to(TREE)}


def look_at(paths, command_of, deadline=None):
    """Runs the command of each path, as many at a time as there are cores, and prints what those say
    that fail. Answers how many failed, and the paths that were not begun before the deadline."""
    def look(path):
        if deadline and time.monotonic() > deadline:
            return None
        return subprocess.run(command_of(path), cwd=TREE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    failed, late = 0, []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for path, done in zip(paths, pool.map(look, paths)):
            if done is None:
                late.append(path)
            elif done.returncode != 0:
                failed += 1
                print(done.stdout.replace(f'{ROOT}/', ''), flush=True)
    return failed, late
