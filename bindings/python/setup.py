"""Builds the package with its wrappers generated from the interface
description of the source tree (or the file named by SHELLFE_INTERFACE).
The shared library is not bundled: the installed package finds it through
SHELLFE_LIBRARY or the system's library path."""
import os
import sys

from setuptools import setup
from setuptools.command.build_py import build_py

HERE = os.path.dirname(os.path.abspath(__file__))


class GenerateRoutines(build_py):
    def run(self):
        super().run()
        sys.path.insert(0, HERE)
        from generate import write_package
        interface = os.environ.get(
            "SHELLFE_INTERFACE", os.path.join(HERE, "..", "..", "src", "frame", "interface.json"))
        write_package(interface, os.path.join(self.build_lib, "shellfe"))


setup(cmdclass={"build_py": GenerateRoutines})
