#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "capture/recording_options.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/ffmpeg/space_budget.h"

namespace brisolte {

/// Makes the directories of `path` (UTF-8), tests that the file can be written and removes it again. False
/// when it cannot be opened, which on Windows it also cannot while somebody has it open. Raises
/// std::filesystem::filesystem_error, named "create_directories" or "remove", when the directories cannot be
/// made or the file cannot be removed, and std::ios_base::failure when it cannot be closed.
bool PrepareOutputFile(const std::string& path);

/// The muxer for the container that the extension of `path` (UTF-8) names, with a new file open for writing.
/// Null, with an ERROR line, when there is none or the file cannot be opened or is there already.
FormatContextPtr CreateFormatContext(const std::string& path);

/// The file of one recording: opened once, streams added, header, packets, trailer, each in this order and at
/// most once. A call out of order fails without harm. Not synchronised: one thread at a time.
class OutputFile {
 public:
  explicit OutputFile(RecordingOptions options = {}) : options_(std::move(options)) {}

  /// Prepares the file and its muxer. True without doing anything when that has succeeded before. Raises what
  /// `PrepareOutputFile` raises.
  bool Initialize(const std::string& path);

  bool initialized() const { return format_ != nullptr; }

  /// Whether streams can be added still: there is a muxer and no header was tried.
  bool AcceptsStreams() const { return format_ && stage_ == Stage::kAddingStreams; }

  /// What FFmpeg tells of the container. Only once initialized.
  const AVOutputFormat& container() const { return *format_->oformat; }

  /// A new stream, owned by the file. Null when it accepts none, and without memory.
  AVStream* AddStream();

  /// Lets the container hold what its standard leaves out but players take. Without a muxer nothing
  /// happens.
  void AllowUnofficial();

  /// Writes the header for the streams added so far. There is one attempt a file: later ones fail.
  bool WriteHeader();

  /// Hands the packet's data to the interleaving muxer. Negative: FFmpeg's error; always so without a header.
  ///
  /// Before the volume is too full to complete the file, that is done: others may take the room that is left
  /// before anybody stops the recording. From then on every packet fails.
  int WritePacket(AVPacket& packet);

  /// Hands everything written so far to the system, which keeps it when the process ends; of a file that is
  /// to be playable throughout, to the disk. Without a header nothing happens.
  void Flush();

  /// Writes the trailer and closes the file, unless that was done when the volume filled up. After a failure
  /// the file stays open until `Close`. The index of a file that was playable throughout goes to its front
  /// where there is room for that, with a WARNING line where not.
  bool Finalize();

  /// Closes and frees what is left. No trailer is written.
  void Close() { format_.reset(); }

 private:
  enum class Stage { kAddingStreams, kHeaderFailed, kWriting, kEnded };

  int TryHeader();
  bool CanBeFragmented() const;
  int WriteFragmentPacket(AVPacket& packet);
  void EndFragment();
  bool Complete();
  /// Of a file in fragments, so that one of its indexes is there at any moment.
  int WriteTrailerBehind();
  void PutIndexInFront();

  const RecordingOptions options_;
  FormatContextPtr format_;
  Stage stage_ = Stage::kAddingStreams;
  SpaceBudget budget_;
  bool fragmented_ = false;  ///< written in fragments, each of which can be played as soon as it is there
  /// Of each stream in fragments the last packet, which is written when it is known how long it lasts: the
  /// muxer lets the next fragment begin where this one ends.
  std::map<int, PacketPtr> last_;
  /// Whether that succeeded, when it was done before `Finalize`; only then. The writer thread's until it
  /// ends.
  std::optional<bool> completed_;
};

}  // namespace brisolte
