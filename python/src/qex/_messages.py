"""Messages about files, and the exception for those that cannot be read or written."""

from __future__ import annotations

from typing import List, NamedTuple, Sequence, Tuple

RawMessage = Tuple[str, int, str, str, str]


def location(path: str, line: int) -> str:
    """``path:line: ``, as far as they are known."""
    return f"{path}:{line}: " if line else f"{path}: " if path else ""


class Message(NamedTuple):
    """A message about a file.

    path: the file, as it was named; empty if the message is not about one file
    line: line of the file from 1; 0 for the file as a whole
    severity: "note", "warning" or "error"
    text: one line
    kind: the text without what is in parentheses and with # for numbers: equal for messages that differ only in those
    """

    path: str
    line: int
    severity: str
    text: str
    kind: str

    def __str__(self) -> str:
        return f"{location(self.path, self.line)}{self.severity}: {self.text}"


class Error(Exception):
    """A file that cannot be read or written, or one that does not fit what was asked for.

    file: the file, as it was named; empty if the error is not about one file
    line: its line from 1; 0 for the file as a whole
    text: what is wrong, in one line
    messages: all messages up to the error, warnings and notes among them

    >>> try:
    ...     qex.load("samples/README.txt")
    ... except qex.Error as error:
    ...     print(error.file, error.line)
    samples/README.txt 0
    """

    file: str
    line: int
    text: str
    messages: List[Message]

    def __init__(self, messages: Sequence[Message]) -> None:
        self.messages = list(messages)
        first = next((message for message in self.messages if message.severity == "error"), None)
        self.file, self.line, self.text = (first.path, first.line, first.text) if first else ("", 0, "it failed without a message")
        super().__init__(self.messages)

    def __str__(self) -> str:
        return location(self.file, self.line) + self.text


def from_core(raw: Sequence[RawMessage]) -> List[Message]:
    """The library's messages as objects."""
    return [Message(*message) for message in raw]
