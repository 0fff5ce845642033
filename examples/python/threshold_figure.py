"""Thresholds a picture with the minimum-residue mode and writes a figure:
the picture, its binary image, and its histogram with the threshold marked.

    PYTHONPATH=build/python python3 examples/python/threshold_figure.py [picture] [figure.png]

Without a picture it makes a frame of its own (dark parts on a lit ground).
"""

import sys

import numpy as np

import mirel


def frame():
    rng = np.random.default_rng(7)
    y, x = np.mgrid[:240, :320]
    image = 170 + 30 * np.sin(x / 60.0) + rng.normal(0, 8, x.shape)
    for cx, cy, r in [(80, 90, 35), (200, 140, 50), (270, 60, 20)]:
        image[(x - cx) ** 2 + (y - cy) ** 2 < r * r] -= 100
    return np.clip(image, 0, 255).astype(np.uint8)


def histogram_plot(counts, threshold, height, width):
    """A bar plot of the counts, 0 to 255 across, with the threshold in grey."""
    plot = np.full((height, width), 255, np.uint8)
    columns = (np.arange(width) * 256) // width
    bars = (counts[columns] * (height - 1) // max(1, counts.max())).astype(int)
    rows = np.arange(height)[:, None]
    plot[rows >= height - bars[None, :]] = 0
    plot[:, columns == threshold] = 128
    return plot


def main():
    picture = mirel.load(sys.argv[1]) if len(sys.argv) > 1 and sys.argv[1] else frame()
    if picture.ndim == 3:
        picture = mirel.convert(picture, np.uint8)  # colour to grey
    threshold = mirel.auto_threshold(picture, "min_residue")
    binary = mirel.threshold(picture, threshold)
    plot = histogram_plot(mirel.histogram(picture), threshold, picture.shape[0] // 2, 2 * picture.shape[1])
    figure = np.vstack([np.hstack([picture, binary]), plot])
    path = sys.argv[2] if len(sys.argv) > 2 else "threshold_figure.png"
    mirel.save(figure, path)
    print(f"threshold {threshold}: {path}")


if __name__ == "__main__":
    main()
