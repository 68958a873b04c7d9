// Recordings as files, for tests of what opens them.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "tests/recordings/recordingwriter.h"

// nFrames frames, of which the first one only defines nodes.
inline CRecordingWriter RecordingOf( int nFrames, int nNodes )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i < nNodes; i++ )
		writer.Node( 0, "node", i );
	writer.EndFrame();
	for ( int nFrame = 1; nFrame < nFrames; nFrame++ )
	{
		writer.BeginFrame().BeginTimings();
		for ( int i = 0; i < nNodes; i++ )
			writer.Entry( 1, 10 );
		writer.EndFrame();
	}
	return writer;
}

// Returns the file's path.
inline QString WriteRecording( const QTemporaryDir &folder, const QString &name, const CRecordingWriter &writer )
{
	QFile file( folder.filePath( name ) );
	EXPECT_TRUE( file.open( QIODevice::WriteOnly ) );
	const auto nSize = static_cast<qint64>( writer.m_Bytes.size() );
	EXPECT_EQ( file.write( reinterpret_cast<const char *>( writer.m_Bytes.data() ), nSize ), nSize );
	return file.fileName();
}
