// Many windows, opened and closed again and again.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPixmapCache>
#include <deque>

#include "frame/budgetwindows.h"
#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "keel0/keyvalues.h"
#include "longrun/longrun.h"
#include "showbudget/budgetpayloads.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

namespace
{
class WindowsLongRunTest : public testing::Test
{
protected:
	WindowsLongRunTest()
	{
		m_Tool.SetHost( &m_Host, nullptr );
		const KeyValues settings( "Settings" );
		m_Tool.LoadSettings( &settings );
	}

	// Windows of that many engines, each with some samples, all of them open at once; then all connections end.
	void OpenAndClose( int nWindows )
	{
		std::deque<CFakeConnection> connections;
		for ( int i = 0; i < nWindows; i++ )
		{
			m_Host.m_pCurrent = &connections.emplace_back();
			ASSERT_TRUE( m_Tool.Open() );
			connections.back().Deliver(
				CHUNK_PCAT, CategoriesPayload( { { "Render", 1, 2, 3 }, { "Audio", 4, 5, 6 } } ) );
			for ( uint32_t nSample = 0; nSample < 10; nSample++ )
				connections.back().Deliver( CHUNK_PCPU, SamplePayload( { 1000 * nSample, 500 } ) );
			QApplication::processEvents();
		}
		ASSERT_EQ( BudgetWindows().size(), static_cast<size_t>( nWindows ) );
		m_Tool.SaveSettings();
		m_Host.m_pCurrent = nullptr;
		for ( CFakeConnection &connection : connections )
		{
			connection.m_nState = 0;
			m_Tool.ConnectionEnded( &connection );
		}
		QApplication::processEvents();
		QApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
		ASSERT_TRUE( BudgetWindows().empty() );
		// Qt keeps the pictures of icons for the whole application, up to 10 MiB.
		QPixmapCache::clear();
	}

	ServiceConnection m_Rows[2] = { { "TesselPostConnect_001" }, { "SchemaSystem_001" } };
	CSchemaRegistry m_Registry;
	CModuleFrame m_Frame{ CServiceConnections( m_Rows ), m_Registry };
	CFakeHost m_Host;
	CShowBudgetTool m_Tool{ m_Frame };
};
} // namespace

TEST_F( WindowsLongRunTest, GrowNothingTheSecondTime )
{
	const int nWindows = LongOrShort( 200, 40 );
	OpenAndClose( nWindows );
	const size_t nHeapBefore = HeapInUse();
	const int nDescriptorsBefore = OpenDescriptors();
	OpenAndClose( nWindows );
	const size_t nHeapAfter = HeapInUse();
	RecordProperty( "heap_after_first_time", std::to_string( nHeapBefore ) );
	RecordProperty( "heap_after_second_time", std::to_string( nHeapAfter ) );
	// Caches of fonts and tables of Qt take a step now and then. The key of an icon's picture, which Qt never forgets,
	// would be over 600 bytes a window.
	constexpr size_t STEPS = 20 * 1024;
	constexpr size_t STEPS_A_WINDOW = 128;
	EXPECT_LE( nHeapAfter, nHeapBefore + STEPS + STEPS_A_WINDOW * static_cast<size_t>( nWindows ) );
	EXPECT_EQ( OpenDescriptors(), nDescriptorsBefore );
}
