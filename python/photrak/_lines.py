"""Lines and numbers of text files, with their places for messages."""

from __future__ import annotations

import os
from typing import Iterator, Union

from .errors import FormatError

Path = Union[str, "os.PathLike[str]"]


def read_lines(path: Path) -> list[str]:
    """The whole lines of a file. One that its writer has not ended yet is left out."""
    with open(path, encoding="utf-8", errors="replace", newline="") as file:
        text = file.read()
    lines = text.split("\n")
    lines.pop()  # behind the last line end
    return [line.rstrip("\r") for line in lines]


def fail(path: Path, number: int, text: str) -> FormatError:
    return FormatError(f"{os.fspath(path)}:{number}: {text}")


def to_float(word: str, path: Path, number: int) -> float:
    if word == ".":
        return float("nan")
    try:
        return float(word)
    except ValueError:
        raise fail(path, number, f"'{word[:40]}' is no number") from None


def to_int(word: str, path: Path, number: int) -> int:
    try:
        return int(word)
    except ValueError:
        raise fail(path, number, f"'{word[:40]}' is no whole number") from None


class NumberedLines:
    """Lines with their numbers, from 1, to be taken one by one."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self.lines = read_lines(path)
        self.number = 0

    def __iter__(self) -> Iterator[str]:
        while self.number < len(self.lines):
            self.number += 1
            yield self.lines[self.number - 1]

    def take(self, count: int) -> list[str]:
        """The next lines; an error if the file has fewer."""
        start = self.number
        if count < 0 or start + count > len(self.lines):
            raise self.error(f"{count} values are announced, and the file ends before")
        self.number += count
        return self.lines[start : start + count]

    def error(self, text: str) -> FormatError:
        return fail(self.path, self.number, text)
