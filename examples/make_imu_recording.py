#!/usr/bin/env python3
"""Makes a recording of a hand-held inertial sensor whose attitude is known.

The device rests, is turned about one axis after the other, shaken, and put down again in between. The gyroscope has
noise, a constant bias and one that wanders; the accelerometer has noise and a constant bias.

    make_imu_recording.py --out DIR [--seconds 60] [--rate 100] [--seed 1]

writes DIR/recording.csv (time, gyroscope, accelerometer) and DIR/truth.csv (time, attitude as quaternion). The world's
z axis points up; attitudes turn directions of the sensor into directions of the world.
"""
import argparse
import csv
import math
import pathlib
import random

GRAVITY = 9.80665  # m/s2
SUBSTEPS = 10      # of the exact motion between two samples


def quaternion_product(a, b):
    ax, ay, az, aw = a
    bx, by, bz, bw = b
    return (aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
            aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz)


def quaternion_about(axis, angle):
    s = math.sin(angle / 2)
    return (s * axis[0], s * axis[1], s * axis[2], math.cos(angle / 2))


def to_sensor(q, v):
    """A direction of the world in the sensor's frame."""
    x, y, z, w = q
    inverse = (-x, -y, -z, w)
    return quaternion_product(quaternion_product(inverse, (*v, 0.0)), q)[:3]


def turned(q, rate, dt):
    """The attitude after turning at a constant rate (rad/s, sensor's axes) for a time."""
    speed = math.hypot(*rate)
    if speed == 0:
        return q
    q = quaternion_product(q, quaternion_about([r / speed for r in rate], speed * dt))
    length = math.hypot(*q)
    return tuple(c / length for c in q)


def bump(phase):
    """Rises from 0 and falls back to it while the phase goes from 0 to 1; its mean is 1."""
    return 1 - math.cos(2 * math.pi * phase)


class Rest:
    def __init__(self, random_source):
        self.duration = random_source.uniform(1.5, 3)

    def at(self, _):
        return (0, 0, 0), (0, 0, 0)


class Turn:
    """By up to 100 degrees about a random axis, while the hand moves to and fro."""

    def __init__(self, random_source):
        self.duration = random_source.uniform(1, 3)
        axis = [random_source.gauss(0, 1) for _ in range(3)]
        angle = math.radians(random_source.uniform(30, 100))
        self.rate = [angle / self.duration * a / math.hypot(*axis) for a in axis]
        self.move = [random_source.gauss(0, 0.1) for _ in range(3)]

    def at(self, time):
        phase = time / self.duration
        # The path is move * (1 - cos)^2 / 4: it starts and ends at rest. This is its second derivative.
        w = 2 * math.pi / self.duration
        path = w * w * (math.cos(w * time) - math.cos(2 * w * time)) / 2
        return [r * bump(phase) for r in self.rate], [m * path for m in self.move]


class Shake:
    """Quick turns to and fro about all axes, and pushes along them."""

    def __init__(self, random_source):
        self.duration = random_source.uniform(1, 2)
        self.waves = [(random_source.uniform(0.3, 1.5), 2 * math.pi * round(random_source.uniform(3, 8) * self.duration)
                       / self.duration, random_source.gauss(0, 2)) for _ in range(3)]

    def at(self, time):
        strength = bump(time / self.duration) / 2
        return ([strength * rate * math.sin(w * time) for rate, w, _ in self.waves],
                [strength * push * math.sin(w * time + 1) for _, w, push in self.waves])


class Sensor:
    """Adds what a cheap sensor adds."""
    gyro_noise, accel_noise = 0.004, 0.03    # rad/s, m/s2
    gyro_bias, accel_bias = 0.008, 0.03      # rad/s, m/s2
    gyro_wander = 0.0002                     # rad/s per square root of a second

    def __init__(self, random_source):
        self.random = random_source
        self.gyro = [random_source.gauss(0, self.gyro_bias) for _ in range(3)]
        self.accel = [random_source.gauss(0, self.accel_bias) for _ in range(3)]

    def sample(self, rate, force, dt):
        self.gyro = [b + self.random.gauss(0, self.gyro_wander * math.sqrt(dt)) for b in self.gyro]
        return ([r + b + self.random.gauss(0, self.gyro_noise) for r, b in zip(rate, self.gyro)],
                [f + b + self.random.gauss(0, self.accel_noise) for f, b in zip(force, self.accel)])


def motions(seconds, random_source):
    """Starts and parts of the motion; every second part is a rest, the last one too."""
    start, part = 0.0, Rest(random_source)
    while True:
        yield start, part
        start += part.duration
        if isinstance(part, Rest) and start < seconds:
            part = random_source.choice([Turn, Turn, Shake])(random_source)
        else:
            part = Rest(random_source)


def record(seconds, rate, seed):
    """Yields time, gyroscope, accelerometer, attitude."""
    random_source = random.Random(seed)
    sensor, parts = Sensor(random_source), motions(seconds, random_source)
    attitude = quaternion_about((0.6, 0.8, 0.0), math.radians(25))
    (start, part), dt = next(parts), 1 / rate
    for i in range(round(seconds * rate) + 1):
        time = i * dt
        while time >= start + part.duration:
            start, part = next(parts)
        turn, push = part.at(time - start)
        force = to_sensor(attitude, (push[0], push[1], push[2] + GRAVITY))
        yield time, *sensor.sample(turn, force, dt), attitude
        for k in range(SUBSTEPS):
            middle = time - start + (k + 0.5) * dt / SUBSTEPS
            if middle < part.duration:
                attitude = turned(attitude, part.at(middle)[0], dt / SUBSTEPS)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--out", type=pathlib.Path, required=True, help="folder, made if missing")
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--rate", type=float, default=100, help="samples per second")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    with open(options.out / "recording.csv", "w", newline="", encoding="utf-8") as log, \
            open(options.out / "truth.csv", "w", newline="", encoding="utf-8") as known:
        recording, truth = csv.writer(log, lineterminator="\n"), csv.writer(known, lineterminator="\n")
        recording.writerow(["t_s", "gyro_x_rad_s", "gyro_y_rad_s", "gyro_z_rad_s",
                            "accel_x_m_s2", "accel_y_m_s2", "accel_z_m_s2"])
        truth.writerow(["t_s", "q_x", "q_y", "q_z", "q_w"])
        for time, gyro, accel, attitude in record(options.seconds, options.rate, options.seed):
            recording.writerow([f"{time:.6f}", *(f"{v:.6f}" for v in (*gyro, *accel))])
            truth.writerow([f"{time:.6f}", *(f"{v:.9f}" for v in attitude)])


if __name__ == "__main__":
    main()
