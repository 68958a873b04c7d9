// Recordings: one at a time, written by a thread of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "framefilter.h"
#include "recordingencoder.h"
#include "recordingfile.h"
#include "target/showbudget.h"

namespace showbudget
{
constexpr double MAX_SLOWER_THAN = 1.0e6; // milliseconds
constexpr uint32_t MAX_FRAMES_AROUND = 1000;

// What RecordingSettings says, with its own texts.
struct RecordingOptions
{
	std::string m_Path;
	uint64_t m_nMaxBytes = RecordingSettings().m_nMaxBytes;
	uint64_t m_nMaxFrames = 0;
	double m_flSlowerThan = 0.0; // milliseconds
	uint32_t m_nAround = 0;
	bool m_bOtherThreads = false;
	bool m_bNewFile = false; // the file must not exist
};

// One recording, from its start to the last byte. Shared by its thread and by whoever may end it.
class CRecording : public std::enable_shared_from_this<CRecording>
{
public:
	CRecording( RecordingOptions options, uint32_t nSession );

	// Opens the file on the calling thread. False when that failed; the reason was logged.
	bool Open();
	// Begins to write on a new thread, which opens the file when nobody has.
	void Start();
	// Frames that end from now on are not recorded any more. Does not wait.
	void RequestEnd();
	// Waits until all is written, or given up because the disk takes nothing.
	void WaitUntilEnded();

	bool IsEnded() const { return m_bEnded.load( std::memory_order_acquire ); }
	RecordingState State() const;
	const std::string &Path() const { return m_Options.m_Path; }

private:
	void BeginSession();
	void Run();
	void WriteFrames();
	void WriteQueued();
	void TakeFrame( const uint8_t *pBytes );
	void KeepFrame( const RecordedFrame &frame );
	void WriteFrame( const RecordedFrame &frame );
	bool Append( const Bytes &bytes );
	void NoteLostFrames();
	void TakeTheRest();
	void CountUntaken();
	void End( Severity severity, const std::string &reason );
	void Report( Severity severity, const std::string &line ) const;
	bool IsGivenUp() const;

	const RecordingOptions m_Options;
	const uint32_t m_nSession;
	CRecordingFile m_File;
	bool m_bOpen = false;
	std::unique_ptr<CRecordingEncoder> m_pEncoder;
	std::unique_ptr<CFrameFilter> m_pFilter;
	Bytes m_Bytes;
	bool m_bWarnedOfNodes = false;

	std::atomic<uint64_t> m_nFrames{ 0 };
	std::atomic<uint64_t> m_nBytes{ 0 };
	std::atomic<uint64_t> m_nLost{ 0 };      // found no room in the queue
	std::atomic<uint64_t> m_nUnwritten{ 0 }; // were to be in the file when it could not be written any more
	uint64_t m_nLostNoted = 0;
	std::string m_EndReason; // why it ended by itself
	Severity m_EndSeverity = Severity::Message;

	std::mutex m_Mutex; // of the conditions
	std::condition_variable m_Changed;
	std::atomic<bool> m_bEnd{ false };
	std::atomic<bool> m_bEnded{ false };
	std::atomic<int64_t> m_nGiveUpTime{ 0 }; // of the steady clock
};

// Starts a recording. With bWait, the file is opened before this returns, and false is returned when that fails; every
// failure is logged. False also when a recording runs.
bool BeginRecording( RecordingOptions options, bool bWait );
// Ends the one that runs, if any; with bWait, when its file is complete.
void EndRecording( bool bWait );
// In a forked child: there is no recording.
void ForgetRecording();

// Reads an option: frames=100, megabytes=50, slower=20, around=2 or threads=all. False, and why in `error`, when it is
// wrong.
bool ReadRecordingOption( std::string_view word, RecordingOptions &options, std::string &error );
// What SHOWBUDGET_RECORD and SHOWBUDGET_RECORD_OPTIONS ask for.
void BeginRecordingOfEnvironment();
} // namespace showbudget
