/// Data that the subcommands can be tried on, made by calculation: the same bytes every time.
#pragma once

#include "output/OutputFolder.h"

namespace mirel {

/// view_1.png to view_6.png: a painted wall from a camera that glides past it; photo_1.png to photo_3.png: the same
/// wall from places far apart.
void writePaintedWall(OutputFolder& folder);

/// figure.obj: a closed, bumpy figure with the noise of a scanner.
void writeBumpyFigure(OutputFolder& folder);

/// depth.png: what a depth camera sees of a room, millimetres, 0 where it measures nothing; points.csv: points of the
/// same room, in metres, some of them far off.
void writeRoom(OutputFolder& folder);

/// recording.csv: a hand-held inertial sensor, turned and put down again; truth.csv: its attitude.
void writeInertialRecording(OutputFolder& folder);

/// series.csv: two noisy quantities over time.
void writeNoisySeries(OutputFolder& folder);

/// poses.json and scan.csv: a scanner's way around a table, and what it saw; views.json: some of the poses, and two
/// that look elsewhere.
void writeScan(OutputFolder& folder);

}  // namespace mirel
