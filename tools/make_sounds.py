#!/usr/bin/env python3
"""Makes the sound files in src/resources/sounds: a few decaying sine tones each."""
import array
import math
import pathlib
import wave

RATE = 22050  # Samples a second: the highest tone below lies far under half of it.
ATTACK = 0.003  # Seconds; a harder start would click.

folder = pathlib.Path(__file__).resolve().parent.parent / "src/resources/sounds"


def tone(start, length, pitch, end_pitch, volume, decay):
    """One tone that glides from one pitch (Hz) to another and dies away."""
    samples = []
    phase = 0.0
    for i in range(int(length * RATE)):
        time = i / RATE
        phase += 2 * math.pi * (pitch + (end_pitch - pitch) * time / length) / RATE
        rise = min(1.0, time / ATTACK)
        fall = math.exp(-time / decay) * min(1.0, (length - time) / 0.01)
        samples.append(volume * rise * fall * math.sin(phase))
    return int(start * RATE), samples


def write(name, tones):
    total = max(start + len(samples) for start, samples in tones)
    mix = [0.0] * total
    for start, samples in tones:
        for i, sample in enumerate(samples):
            mix[start + i] += sample
    data = array.array("h", (round(max(-1.0, min(1.0, value)) * 32767) for value in mix))
    with wave.open(str(folder / name), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(data.tobytes())


folder.mkdir(parents=True, exist_ok=True)
# Rises quickly, like a bubble.
write("pop.wav", [tone(0, 0.12, 380, 760, 0.35, 0.035), tone(0, 0.06, 760, 1520, 0.08, 0.015)])
# Two partials that are no octave apart, like a small glass.
write("tink.wav", [tone(0, 0.30, 2090, 2090, 0.20, 0.06), tone(0, 0.18, 4980, 4980, 0.06, 0.03)])
# Twice the same low tone, muffled.
write("beep.wav", [tone(at, 0.11, 233, 220, 0.40, 0.05) for at in (0, 0.13)])
