// What a chunk of scopes makes the mini-profiler panel take from the heap, however it is made: at most 64 MiB and 16
// bytes for each of its bytes.
#include <gtest/gtest.h>

#include <QComboBox>
#include <string>
#include <string_view>

#include "memorybound.h"
#include "miniprofiler/framebuilder.h"
#include "miniprofiler/miniprofilerwidget.h"
#include "support/logguard.h"

namespace
{
constexpr uint64_t RECORDS = CMiniProfilerModel::MAX_RECORDS;

class ScopeMemory : public testing::Test
{
protected:
	void SetUp() override
	{
		if ( !countedmemory::IsCounted() )
			GTEST_SKIP() << "this build has another heap";
	}

	void Choose( const char *pText ) const // in the combo box that offers it
	{
		for ( QComboBox *pCombo : m_Panel.findChildren<QComboBox *>() )
			if ( pCombo->findText( pText ) >= 0 )
				pCombo->setCurrentText( pText );
	}

	void ExpectBounded( const CFrameBuilder &frame )
	{
		const int64_t nPeak = PeakMemoryOf( [&] { m_Panel.ReceiveChunk( frame.Payload() ); } );
		EXPECT_LE( nPeak, MemoryBound( frame.Payload().size() ) ) << "for " << frame.Payload().size() << " bytes";
	}

	size_t RecordCount() const { return m_Panel.Model().Records().size(); }

	CQMiniProfilerWidget m_Panel{ nullptr };
};

// Different texts of as few characters as possible, none of which means anything.
std::string ShortText( uint64_t nNumber )
{
	const std::string_view alphabet = "abcdefghijklmnopqrstuvwxyz0123456789!#$%&()*+,-.;<=>?@[]^_{|}";
	std::string text;
	for ( ; nNumber > 0; nNumber /= alphabet.size() )
		text += alphabet[nNumber % alphabet.size()];
	return text;
}

TEST_F( ScopeMemory, OfNewScopesWithSamplesIsBounded )
{
	CFrameBuilder frame;
	frame.BeginData( true );
	for ( uint64_t nId = 1; nId <= RECORDS; nId++ )
		frame.Entry( nId, 0, nId, 1 );
	ExpectBounded( frame.End() );
	EXPECT_EQ( RecordCount(), RECORDS );
}

TEST_F( ScopeMemory, OfNewScopesWithNewCallersIsBounded )
{
	CFrameBuilder frame;
	frame.BeginData( true );
	for ( uint64_t nId = 1; nId <= RECORDS; nId += 2 )
		frame.Entry( nId, nId + 1, nId, 1 );
	ExpectBounded( frame.End() );
	EXPECT_EQ( RecordCount(), RECORDS );
}

// With as few bytes for each record as there can be.
TEST_F( ScopeMemory, OfScopesAndParentsWithoutNamesIsBounded )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, RECORDS / 2 );
	for ( uint64_t nId = 1; nId <= RECORDS; nId += 2 )
		frame.Name( nId, nId + 1, "", "" );
	ExpectBounded( frame.End() );
	EXPECT_EQ( RecordCount(), RECORDS );
}

TEST_F( ScopeMemory, OfShortNamesIsBounded )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, RECORDS / 2 );
	for ( uint64_t nId = 1; nId <= RECORDS; nId += 2 )
		frame.Name( nId, nId + 1, ShortText( nId ), "" );
	ExpectBounded( frame.End() );
	EXPECT_EQ( RecordCount(), RECORDS );
}

TEST_F( ScopeMemory, OfDescriptionsOfVeryManyLinesIsBounded )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 1 ).Name( 1, 0, "", std::string( 8 << 20, '\n' ) );
	ExpectBounded( frame.End() );
}

// Samples come to rings that are still empty: as few as possible that fill something in each.
TEST_F( ScopeMemory, OfTheFirstSamplesOfKnownScopesIsBounded )
{
	CFrameBuilder names;
	names.BeginNames( 1, RECORDS / 2 );
	for ( uint64_t nId = 1; nId <= RECORDS; nId += 2 )
		names.Name( nId, nId + 1, "", "" );
	m_Panel.ReceiveChunk( names.End().Payload() );
	CFrameBuilder frame;
	frame.BeginData( true );
	for ( uint64_t nId = 1; nId <= RECORDS; nId += CMiniProfilerHistory::BLOCK_RECORDS )
		frame.Entry( nId, 0, nId, 1 );
	frame.End();
	const int64_t nBefore = countedmemory::Now();
	for ( uint32_t i = 0; i < 2 * CMiniProfilerHistory::CAPACITY; i++ )
		ExpectBounded( frame );
	const auto nRings = static_cast<int64_t>( RECORDS * CMiniProfilerHistory::CAPACITY * sizeof( MiniProfilerSample ) );
	EXPECT_GE( countedmemory::Now() - nBefore, nRings ); // all of them are there now
}

class ScopeGroupMemory
	: public ScopeMemory
	, public testing::WithParamInterface<std::pair<const char *, const char *>> // the mode and what its line follows
{
protected:
	void SetUp() override
	{
		ScopeMemory::SetUp();
		Choose( GetParam().first );
	}

	// With a parent: two records.
	void AddPath( CFrameBuilder &frame, const std::string &path, const std::string &rest = "" )
	{
		frame.Name( m_nNextId, m_nNextId + 1, ShortText( m_nNextId ), GetParam().second + path + "\n" + rest );
		m_nNextId += 2;
	}

	size_t GroupCount() const { return m_Panel.Model().Groups().size(); }

	uint64_t m_nNextId = 1;
	CExpectWarnings m_Warnings; // of groups that find no room
};

constexpr uint64_t LEVELS = 62;

// A path of two groups and as many below them. All paths begin alike, so that files have that in common and no more.
std::string DeepPath( const std::string &second )
{
	std::string path = "~/" + second;
	for ( uint64_t i = 0; i < LEVELS; i++ )
		path += "/a";
	return path;
}

// As many groups as there may be, each for two more bytes, and then as many scopes, each for an entry that makes two of
// them and everything that goes with a name.
TEST_P( ScopeGroupMemory, OfManyGroupsBeforeVeryManyScopesIsBounded )
{
	Choose( "Leaf Static Tree" );
	CFrameBuilder frame;
	frame.BeginNames( 1, RECORDS / 2 );
	AddPath( frame, "~/!" );
	while ( m_nNextId <= RECORDS )
		if ( m_nNextId < 4 * CMiniProfilerModel::FREE_GROUPS / LEVELS )
			AddPath( frame, DeepPath( ShortText( m_nNextId ) ) );
		else
		{
			frame.Name( m_nNextId, m_nNextId + 1, ShortText( m_nNextId ), "x" );
			m_nNextId += 2;
		}
	ExpectBounded( frame.End() );
	EXPECT_EQ( RecordCount(), RECORDS );
	EXPECT_GE( GroupCount(), CMiniProfilerModel::FREE_GROUPS );
	EXPECT_EQ( m_Warnings.Take().size(), 1u );
}

// Further groups are had for longer descriptions.
TEST_P( ScopeGroupMemory, OfVeryManyGroupsIsBounded )
{
	CFrameBuilder frame;
	const uint64_t nPaths = CMiniProfilerModel::MAX_GROUPS / LEVELS + 1;
	frame.BeginNames( 1, static_cast<int32_t>( nPaths + 1 ) );
	AddPath( frame, "~/!" );
	const std::string rest( LEVELS * CMiniProfilerModel::DESCRIPTION_BYTES_PER_GROUP, 'r' );
	while ( m_nNextId <= 2 * nPaths )
		AddPath( frame, DeepPath( ShortText( m_nNextId ) ), rest );
	ExpectBounded( frame.End() );
	EXPECT_EQ( GroupCount(), CMiniProfilerModel::MAX_GROUPS );
	EXPECT_EQ( m_Warnings.Take().size(), 1u );
}

TEST_P( ScopeGroupMemory, OfAPathThatIsLongBeforeItsLevelsIsBounded )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 2 );
	AddPath( frame, "~/!" );
	AddPath( frame, DeepPath( std::string( 8 << 20, 'a' ) ) );
	ExpectBounded( frame.End() );
	EXPECT_GE( GroupCount(), LEVELS );
}

INSTANTIATE_TEST_SUITE_P( OfEveryMode, ScopeGroupMemory,
	testing::Values( std::pair( "Group by File", "\n\n" ), std::pair( "Group by Function", "\n" ),
		std::pair( "Group by Project", "\n\n\n\n" ) ) );
} // namespace
