# SPDX-License-Identifier: MIT
"""The package as a type checker sees it, and its documentation."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path

import raxel


def test_mypy_is_strict() -> None:
    package = Path(raxel.__file__).parent
    cache = os.path.join(os.environ["RAXEL_BUILD"], "mypy")  # numpy's types take a while
    done = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--cache-dir", cache, "--no-error-summary", str(package)],
        capture_output=True, text=True, check=False, cwd=package.parent,
    )
    assert done.returncode == 0, done.stdout + done.stderr


def test_everything_public_is_documented() -> None:
    for name in raxel.__all__:
        assert getattr(raxel, name).__doc__ or name.isupper(), name
    assert (Path(raxel.__file__).parent / "py.typed").exists()
