"""What can go wrong: a file that is none of ours, and a run that failed."""

from __future__ import annotations

from typing import Any, Sequence


class FormatError(ValueError):
    """A file does not hold what its format asks for; the text has file and line."""


class PhotrakWarning(UserWarning):
    """A warning of the program."""


class PhotrakError(RuntimeError):
    """The program failed. ``status`` is its exit status, ``diagnostics`` what it said."""

    def __init__(self, text: str, status: int, diagnostics: Sequence[dict[str, Any]]) -> None:
        super().__init__(text)
        self.status = status
        self.diagnostics = list(diagnostics)
