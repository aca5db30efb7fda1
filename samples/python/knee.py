"""Plots the angle of a knee with its limits: python3 knee.py walk.amc left_shin knee.png"""

import sys

import matplotlib
import qex

matplotlib.use("agg")
clip = qex.load(sys.argv[1])
clip.plot(sys.argv[2]).figure.savefig(sys.argv[3])
