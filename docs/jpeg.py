"""Pictures for the pages: JPEG files that stay small, by the tools of libjpeg-turbo and netpbm."""

import subprocess

MOST_BYTES = 150_000
MOST_COLUMNS = 1200


def _run(command, data):
    return subprocess.run(command, input=data, capture_output=True, check=True).stdout


def small_jpeg(pixels):
    """Pixels in PPM format as a JPEG of the best quality that is small enough."""
    for quality in range(80, 30, -5):
        jpeg = _run(["cjpeg", "-quality", str(quality), "-optimize"], pixels)
        if len(jpeg) < MOST_BYTES:
            break
    return jpeg


def jpeg_of_png(png):
    """A PNG file as a small JPEG, made narrower if it is wider than a page."""
    pixels = _run(["pngtopnm"], png)
    if int(pixels.split(maxsplit=3)[1]) > MOST_COLUMNS:
        pixels = _run(["pamscale", "-xsize", str(MOST_COLUMNS)], pixels)
    return small_jpeg(pixels)
