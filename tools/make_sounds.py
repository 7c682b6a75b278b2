#!/usr/bin/env python3
"""Makes the program's sounds: short tones that fade away, as mono WAV files.

A tone is a list of partials (frequency in hertz, loudness, seconds until it has faded to a third).
"""
import math
import pathlib
import struct
import wave

RATE = 22050
FOLDER = pathlib.Path(__file__).resolve().parent.parent / "src/resources/sounds"

# A bubble rises a little while it bursts; a small bell; two low knocks.
SOUNDS = {
    "pop": (0.16, 0.35, [(520, 1.0, 0.030), (1040, 0.25, 0.018)], 1.35),
    "tink": (0.30, 0.22, [(2093, 1.0, 0.060), (5274, 0.35, 0.030), (3322, 0.25, 0.045)], 1.0),
    "beep": (0.22, 0.35, [(196, 1.0, 0.060), (392, 0.4, 0.040)], 0.92),
}


def samples(seconds, loudness, partials, glide):
    count = int(seconds * RATE)
    for i in range(count):
        t = i / RATE
        bend = 1 + (glide - 1) * min(1, t / 0.05)
        attack = min(1, t / 0.002)
        release = min(1, (count - i) / (0.01 * RATE))  # Ends at silence, without a click.
        value = sum(level * math.exp(-t / fade) * math.sin(2 * math.pi * hertz * bend * t)
                    for hertz, level, fade in partials)
        yield int(32767 * loudness * attack * release * value / sum(p[1] for p in partials))


FOLDER.mkdir(parents=True, exist_ok=True)
for name, sound in SOUNDS.items():
    with wave.open(str(FOLDER / f"{name}.wav"), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(b"".join(struct.pack("<h", value) for value in samples(*sound)))
