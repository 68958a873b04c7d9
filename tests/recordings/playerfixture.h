// A shown player with recordings of few nodes.
#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <QTreeWidget>

#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

class Player : public testing::Test
{
protected:
	Player()
	{
		m_Player.resize( 900, 400 );
		m_Player.show();
	}

	// Root 0 with "Physics" (1) and "Render" (2), "Shadows" (3) below 2: rows 0, 2, 3, 1. Frame 0 has no timings; then
	// there is one for each time of "Render". Times are in units of 4 microseconds; the root's is 4000.
	static CRecordingWriter Recording( const std::vector<uint32_t> &renderTimes )
	{
		CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
		writer.Node( 0, "Physics", 1 ).Node( 0, "Render", 2 ).Node( 2, "Shadows", 3 ).EndFrame();
		for ( const uint32_t nTime : renderTimes )
		{
			writer.BeginFrame().BeginTimings();
			writer.Entry( 1, 4000 ).Entry( 2, nTime ).Entry( 0, 0 ).Entry( 3, 0 ).EndFrame();
		}
		return writer;
	}

	void Show( const CRecordingWriter &writer ) { m_Player.SetRecording( Parse( writer ).Get() ); }
	template <typename T>
	T &Child() const
	{
		return *m_Player.findChild<T *>();
	}
	QTreeWidgetItem &Item( const char *pName ) const
	{
		return *Child<QTreeWidget>().findItems( pName, Qt::MatchExactly | Qt::MatchRecursive ).value( 0 );
	}
	void Key( Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier )
	{
		QTest::keyClick( &Child<CQFlamegraphWidget>(), key, modifiers );
	}

	CQKestoPlayerWidget m_Player{ nullptr };
};
