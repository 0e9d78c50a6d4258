// Where results go: the third of the three interfaces that an application implements (or takes
// ours: OutputDocument, which keeps everything for the renderers).
//
// The procedures build tables, notes, messages and charts with the Bp and X classes; each arrives
// here finished, in the order of its making. Everything handed over is a value that the sink may
// move from. Called on the run's own thread.
#pragma once

namespace MCHost {

struct OutputChart;
struct OutputMessage;
struct OutputNote;
struct OutputTable;

class IOutputSink {
 public:
  virtual ~IOutputSink() = default;
  virtual void AddMessage(OutputMessage message) = 0;
  virtual void AddNote(OutputNote note) = 0;
  virtual void AddTable(OutputTable table) = 0;
  virtual void AddChart(OutputChart chart) = 0;
};

}  // namespace MCHost
