// A session that records, with frames that can be told apart in the file.
#pragma once

#include <string>

#include "recordingfile.h"
#include "session.h"

inline SHOWBUDGET_BUDGET( g_RecorderBudget, "Recorder test", 1, 2, 3 );

// The calls of one scope number the frames.
inline void RunFrame( uint64_t nNumber )
{
	for ( uint64_t i = 0; i < nNumber; i++ )
	{
		SHOWBUDGET_SCOPE( g_RecorderBudget, "Number" );
	}
	showbudget::EndFrame();
}

class Recorder : public CSession
{
protected:
	void TearDown() override
	{
		showbudget::StopRecording();
		CSession::TearDown();
	}
	showbudget::RecordingSettings MakeRecording()
	{
		showbudget::RecordingSettings settings;
		settings.m_pFile = m_File.c_str();
		return settings;
	}
	void Record( const showbudget::RecordingSettings &settings )
	{
		ASSERT_TRUE( showbudget::StartRecording( settings ) );
		showbudget::EndFrame(); // the starting line
	}
	CRecordingFileOfTest Read() { return CRecordingFileOfTest( ReadBytes( m_File ) ); }
	static bool WaitUntilEnded()
	{
		return WaitUntil( [] { return !showbudget::GetRecordingState().m_bRunning; } );
	}

	CTemporaryFolder m_Folder;
	std::string m_File = m_Folder.File( "test.kesto" );
};
