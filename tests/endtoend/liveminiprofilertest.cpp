// The mini-profiler with a real engine: names, numbers, groups and pause, as a user sees them.
#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <set>

#include "endtoend/demoengine.h"
#include "endtoend/liveconsole.h"
#include "targetconnection.h"
#include "tessel/itesseldatareceived.h"
#include "wire/chunks.h"

namespace
{
constexpr int HISTORY = 128; // samples behind every average
constexpr int SCOPES = 60;

// A row as Ctrl+C gives it.
struct Row
{
	QString m_Name;
	double m_flCalls = 0.0;
	double m_flInclusive = 0.0; // milliseconds in a frame
};

class LiveMiniProfiler : public testing::Test
{
protected:
	void Start()
	{
		ASSERT_NO_FATAL_FAILURE( m_Engine.Start() );
		m_pConsole = std::make_unique<CLiveConsole>( m_Engine.Port() );
		ASSERT_TRUE( WaitUntil( [this] { return m_pConsole->SampleCount() > 0; } ) );
		m_pConsole->Action( "Microprofiler" )->trigger();
		m_pTree = m_pConsole->Window()->findChild<QTreeWidget *>();
		ASSERT_TRUE( m_pTree );
		ASSERT_TRUE( WaitUntil( [this] { return NamedItems() >= SCOPES; } ) ) << NamedItems() << " named scopes";
	}

	// Lets nothing more of the engine in, so that rows and samples are of the same frames.
	void Freeze() const
	{
		m_pConsole->Action( "Pause Collection" )->trigger();
		m_pConsole->Action( "Stop Sampling" )->trigger();
	}

	QComboBox &Choice( const QString &text ) const // the combo box with that entry
	{
		for ( QComboBox *pComboBox : m_pConsole->Window()->findChildren<QComboBox *>() )
			if ( pComboBox->findText( text ) >= 0 )
				return *pComboBox;
		throw std::runtime_error( "no such choice" );
	}
	void Choose( const QString &text ) const { Choice( text ).setCurrentText( text ); }

	int NamedItems() const
	{
		int nNamed = 0;
		for ( QTreeWidgetItemIterator i( m_pTree ); *i; ++i )
			nNamed += !( *i )->text( 0 ).isEmpty();
		return nNamed;
	}

	// All rows that are not in a closed branch, with times in milliseconds.
	std::vector<Row> CopyRows() const
	{
		m_pTree->selectAll();
		QTest::keyClick( m_pTree, Qt::Key_C, Qt::ControlModifier );
		std::vector<Row> rows;
		for ( const QString &line : QGuiApplication::clipboard()->text().split( '\n', Qt::SkipEmptyParts ) )
		{
			const QStringList cells = line.split( '\t' );
			EXPECT_EQ( cells.size(), 6 ) << line.toStdString();
			rows.push_back( { cells.value( 0 ), cells.value( 1 ).toDouble(), cells.value( 2 ).toDouble() } );
		}
		return rows;
	}

	CDemoEngine m_Engine;
	std::unique_ptr<CLiveConsole> m_pConsole;
	QTreeWidget *m_pTree = nullptr;
};

// Hands chunks on to the window and counts them.
class CChunkCounter final : public ITesselDataReceived
{
public:
	explicit CChunkCounter( ITesselDataReceived &window )
		: m_Window( window )
	{
	}

	bool OnDataReceived( ITesselConnection *pConnection, uint32_t nChunkType, uint16_t nVersion, uint32_t nLength,
		uint8_t *pBuffer ) override
	{
		m_nCount++;
		return m_Window.OnDataReceived( pConnection, nChunkType, nVersion, nLength, pBuffer );
	}

	int m_nCount = 0;

private:
	ITesselDataReceived &m_Window;
};

int CountBelowGroups( const QTreeWidget &tree, const std::set<QString> &scopes )
{
	int nFound = 0;
	for ( QTreeWidgetItemIterator i( const_cast<QTreeWidget *>( &tree ) ); *i; ++i )
		nFound += ( *i )->parent() && ( *i )->childCount() == 0 && scopes.contains( ( *i )->text( 0 ) );
	return nFound;
}
} // namespace

TEST_F( LiveMiniProfiler, ShowsTheScopesOfAnEngineWithTimesThatAddUpToItsFrames )
{
	ASSERT_NO_FATAL_FAILURE( Start() );
	Choose( "Leaf Dynamic Tree (approx)" );
	Choose( "ms #.###" );
	const int nFull = m_pConsole->SampleCount() + HISTORY + 2;
	ASSERT_TRUE( WaitUntil( [&] { return m_pConsole->SampleCount() >= nFull; } ) );
	Freeze();
	m_pConsole->Action( "Rebuild Hierarchy Continuously" )->trigger(); // scopes hang below their callers from now on
	Choose( "ms #.##" );                                               // which brings a last regeneration
	Choose( "ms #.###" );

	m_pTree->expandAll();
	int nScopes = 0;
	for ( const Row &row : CopyRows() )
		if ( row.m_flCalls > 0.0 && row.m_flInclusive > 0.0 && !row.m_Name.isEmpty() )
			nScopes++;
	EXPECT_GE( nScopes, SCOPES );

	m_pTree->collapseAll();
	double flTopLevel = 0.0;
	for ( const Row &row : CopyRows() )
		flTopLevel += row.m_flInclusive;

	double flFrames = 0.0;
	for ( int i = 0; i < HISTORY; i++ )
	{
		flFrames += m_pConsole->FrameMilliseconds();
		QTest::keyClick( m_pConsole->Window(), Qt::Key_Left );
	}
	const double flFrame = flFrames / HISTORY;
	EXPECT_GT( flFrame, 0.0 );
	EXPECT_NEAR( flTopLevel, flFrame, 0.1 * flFrame );
}

TEST_F( LiveMiniProfiler, GroupsScopesByBudgetFileFunctionAndProject )
{
	ASSERT_NO_FATAL_FAILURE( Start() );
	Freeze();
	std::set<QString> scopes;
	for ( QTreeWidgetItemIterator i( m_pTree ); *i; ++i )
		if ( !( *i )->text( 0 ).isEmpty() )
			scopes.insert( ( *i )->text( 0 ) );
	ASSERT_GE( scopes.size(), size_t{ SCOPES } );

	std::set<QStringList> trees;
	for ( const char *pMode : { "Group by Budget", "Group by File", "Group by Function", "Group by Project" } )
	{
		Choose( pMode );
		EXPECT_GE( CountBelowGroups( *m_pTree, scopes ), SCOPES ) << pMode;
		QStringList groups;
		for ( int i = 0; i < m_pTree->topLevelItemCount(); i++ )
			if ( m_pTree->topLevelItem( i )->childCount() > 0 )
				groups += m_pTree->topLevelItem( i )->text( 0 );
		groups.sort();
		EXPECT_FALSE( groups.isEmpty() ) << pMode;
		EXPECT_TRUE( trees.insert( groups ).second ) << pMode << " shows the groups of another mode";
	}
	Choose( "Group by Budget" );
	for ( const char *pBudget : { "Physics", "Animation", "Audio" } )
		EXPECT_EQ( m_pTree->findItems( pBudget, Qt::MatchExactly ).size(), 1 ) << pBudget;
}

TEST_F( LiveMiniProfiler, PauseStopsTheEnginesChunks )
{
	ASSERT_NO_FATAL_FAILURE( Start() );
	CChunkCounter counter( dynamic_cast<ITesselDataReceived &>( *m_pConsole->Window() ) );
	ITesselConnection &connection = *m_pConsole->Host().GetCurrentConnection();
	connection.RegisterReceiver( wire::CHUNK_MINIPROFILER, wire::CHUNK_VERSION, &counter );
	ASSERT_TRUE( WaitUntil( [&] { return counter.m_nCount > 10; } ) );

	QAction *pPause = m_pConsole->Action( "Pause Collection" );
	pPause->trigger();
	const auto WaitForFrames = [this]( int nFrames )
	{
		const int nLast = m_pConsole->SampleCount() + nFrames;
		return WaitUntil( [&] { return m_pConsole->SampleCount() >= nLast; } );
	};
	ASSERT_TRUE( WaitForFrames( 60 ) ); // what was on its way has arrived
	const int nCount = counter.m_nCount;
	ASSERT_TRUE( WaitForFrames( 30 ) );
	EXPECT_EQ( counter.m_nCount, nCount );

	pPause->trigger();
	EXPECT_TRUE( WaitUntil( [&] { return counter.m_nCount > nCount; } ) );
	connection.RegisterReceiver(
		wire::CHUNK_MINIPROFILER, wire::CHUNK_VERSION, dynamic_cast<ITesselDataReceived *>( m_pConsole->Window() ) );
}
