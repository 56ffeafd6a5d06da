"""Signal files (.sgd): whole waveforms with all that a link knows of them."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Callable, Optional

import numpy as np
import numpy.typing as npt

from ._lines import NumberedLines, Path, to_float, to_int

Array = npt.NDArray[np.float64]
ComplexArray = npt.NDArray[np.complex128]


def _times(count: int, step: float, start: float) -> Array:
    return start + step * np.arange(count)


@dataclass
class NoiseSpectrum:
    """Density of spontaneous emission in one polarization, W/Hz over Hz."""

    f_start: float = 0.0
    f_step: float = 0.0
    density: Array = field(default_factory=lambda: np.empty(0))

    @property
    def frequency(self) -> Array:
        return _times(len(self.density), self.f_step, self.f_start)


@dataclass
class OpticalChannel:
    """The field of one channel, in units of the root of W; ``ey`` is None for one polarization."""

    wavelength: float = 0.0  # m
    domain: str = "TIMEDOMAIN"
    bit_rate: float = 0.0  # bit/s
    pattern_length: int = 0
    t_step: float = 0.0  # s
    start_time: float = 0.0  # s
    rin: float = 0.0  # 1/Hz
    ex: ComplexArray = field(default_factory=lambda: np.empty(0, complex))
    ey: Optional[ComplexArray] = None

    @property
    def time(self) -> Array:
        return _times(len(self.ex), self.t_step, self.start_time)

    @property
    def power(self) -> Array:
        """W, of both polarizations."""
        power = np.abs(self.ex) ** 2
        if self.ey is not None:
            power += np.abs(self.ey) ** 2
        return np.asarray(power, dtype=np.float64)


@dataclass
class ElectricalSignal:
    """A waveform in V or A with the standard deviation of its noise."""

    unit: str = "VOLTAGE"
    domain: str = "TIMEDOMAIN"
    bit_rate: float = 0.0
    pattern_length: int = 0
    t_step: float = 0.0
    start_time: float = 0.0
    samples: Array = field(default_factory=lambda: np.empty(0))
    sigma: Array = field(default_factory=lambda: np.empty(0))

    @property
    def time(self) -> Array:
        return _times(len(self.samples), self.t_step, self.start_time)


@dataclass
class BinarySignal:
    bit_rate: float = 0.0
    start_time: float = 0.0
    bits: npt.NDArray[np.int8] = field(default_factory=lambda: np.empty(0, np.int8))


@dataclass
class SignalGroup:
    """One signal: channels and noise of light, or a waveform, or bits. ``place`` tells where the
    run stood: SET, INNERSWEEP, OUTERSWEEP, STATRUN, LOOP."""

    place: dict[str, int] = field(default_factory=dict)
    channels: list[OpticalChannel] = field(default_factory=list)
    noise: list[NoiseSpectrum] = field(default_factory=list)
    electrical: Optional[ElectricalSignal] = None
    binary: Optional[BinarySignal] = None


_PLACES = ("SET", "INNERSWEEP", "OUTERSWEEP", "STATRUN", "RUN", "LOOP", "BIN")
_NUMBERS = {
    "fstart": "f_start", "fstep": "f_step", "wavelength": "wavelength", "bitRate": "bit_rate",
    "tStep": "t_step", "startTime": "start_time", "RIN": "rin",
}  # fmt: skip
_TEXTS = {"domain": "domain", "UnitType": "unit"}


class _Reader:
    """Walks the keywords; ``record`` is what the present lines belong to."""

    def __init__(self, path: Path) -> None:
        self.lines = NumberedLines(path)
        self.groups: list[SignalGroup] = []
        self.open = False
        self.record: object = None
        self.count = 0

    def read(self) -> list[SignalGroup]:
        for line in self.lines:
            stripped = line.strip()
            if not stripped:
                continue
            cut = min((stripped.find(c) for c in " :\t" if c in stripped), default=len(stripped))
            self.keyword(stripped[:cut], stripped[cut:].strip(" :\t"))
        if self.open:
            raise self.lines.error("the file ends inside a signal")
        return self.groups

    def keyword(self, word: str, value: str) -> None:
        if word == "BEGINSIG":
            self.groups.append(SignalGroup())
            self.open, self.record = True, None
            return
        if not self.open:
            return
        group = self.groups[-1]
        if word == "ENDSIG":
            self.open = False
        elif word in _PLACES:
            group.place[word] = to_int(value, self.lines.path, self.lines.number)
        elif word in ("OpSigASE", "OpSigType", "ElecSigType", "BinSigType"):
            self.begin(word, group)
        elif self.record is not None:
            self.member(word, value)

    def begin(self, word: str, group: SignalGroup) -> None:
        self.count = 0
        if word == "OpSigASE":
            group.noise.append(NoiseSpectrum())
            self.record = group.noise[-1]
        elif word == "OpSigType":
            group.channels.append(OpticalChannel())
            self.record = group.channels[-1]
        elif word == "ElecSigType":
            group.electrical = ElectricalSignal()
            self.record = group.electrical
        else:
            group.binary = BinarySignal()
            self.record = group.binary

    def member(self, word: str, value: str) -> None:
        place = (self.lines.path, self.lines.number)
        if word == "noPoints":
            self.count = to_int(value, *place)
        elif word == "patternLength":
            setattr(self.record, "pattern_length", to_int(value, *place))
        elif word in _NUMBERS:
            setattr(self.record, _NUMBERS[word], to_float(value, *place))
        elif word in _TEXTS:
            setattr(self.record, _TEXTS[word], value)
        else:
            self.samples(word)

    def samples(self, word: str) -> None:
        complex_words = {"Ex_samples": "ex", "Ey_samples": "ey"}
        real_words = {"elecSamples": "samples", "sigmaSamples": "sigma", "powerSamples": "density"}
        if word in complex_words:
            setattr(self.record, complex_words[word], self.values(_to_complex, np.complex128))
        elif word in real_words:
            setattr(self.record, real_words[word], self.values(_to_real, np.float64))
        elif word == "bitSequence":
            setattr(self.record, "bits", self.values(int, np.int8))

    def values(self, convert: Callable[[str], object], kind: type) -> npt.NDArray[np.generic]:
        lines = self.lines.take(self.count)
        try:
            return np.array([convert(line) for line in lines], dtype=kind)
        except ValueError as error:
            raise self.lines.error(f"a sample of the lines before: {error}") from None


def _to_complex(text: str) -> complex:
    return complex(text.strip().replace("+-", "-"))


def _to_real(text: str) -> float:
    """The real part, where a line has two."""
    text = text.strip()
    return _to_complex(text).real if text.endswith("j") else float(text)


def read_signals(path: Path) -> list[SignalGroup]:
    """All signals of a file, in their order."""
    return _Reader(path).read()
