// Connections, windows, the sub-tool and the module end in every order.
#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QPointer>
#include <QWidget>
#include <algorithm>
#include <array>

#include "events/loadedmodule.h"
#include "frame/budgetwindows.h"
#include "support/countingallocator.h"

namespace
{
struct Ending
{
	const char *m_pName;
	void ( CLoadedModule::*m_pEnd )();
};

using Order = std::array<Ending, 4>;

std::vector<Order> AllOrders()
{
	constexpr Order ENDINGS = { {
		{ "Connections", &CLoadedModule::EndConnections },
		{ "Windows", &CLoadedModule::CloseWindows },
		{ "ShutDown", &CLoadedModule::ShutDown },
		{ "Unload", &CLoadedModule::Unload },
	} };
	std::array<size_t, 4> places = { 0, 1, 2, 3 };
	std::vector<Order> orders;
	do
		orders.push_back( { ENDINGS[places[0]], ENDINGS[places[1]], ENDINGS[places[2]], ENDINGS[places[3]] } );
	while ( std::ranges::next_permutation( places ).found );
	return orders;
}

std::string NameOf( const Order &order )
{
	std::string name;
	for ( const Ending &ending : order )
		name += ending.m_pName;
	return name;
}

class EndingOrders : public testing::TestWithParam<Order>
{
};

TEST_P( EndingOrders, EndWithoutHarm )
{
	for ( const bool bEventsBetween : { false, true } )
	{
		SCOPED_TRACE( bEventsBetween );
		const CCountingAllocator allocator;
		CLoadedModule module;
		module.OpenWindow( 0 );
		module.OpenWindow( 1 );
		for ( const Ending &ending : GetParam() )
		{
			( module.*ending.m_pEnd )();
			if ( bEventsBetween )
				QApplication::processEvents();
		}
		QApplication::processEvents();
		EXPECT_TRUE( BudgetWindows().empty() );
		EXPECT_FALSE( CLoadedModule::IsMapped() );
	}
}

INSTANTIATE_TEST_SUITE_P(, EndingOrders, testing::ValuesIn( AllOrders() ),
	[]( const auto &parameter ) { return NameOf( parameter.param ); } );
} // namespace

TEST( ModuleSession, SavesSettingsWithAndWithoutWindows )
{
	CLoadedModule module;
	KeyValues *pKept = module.m_pSubTool->SaveSettings();
	ASSERT_NE( pKept, nullptr );
	EXPECT_EQ( pKept->FindKey( "geometry" ), nullptr );
	module.OpenWindow( 0 );
	module.OpenWindow( 1 );
	EXPECT_EQ( module.m_pSubTool->SaveSettings(), pKept );
	const std::string geometry = pKept->GetString( "geometry" );
	EXPECT_NE( geometry, "" );
	module.CloseWindows();
	EXPECT_EQ( module.m_pSubTool->SaveSettings(), pKept );
	module.EndConnections();
	EXPECT_EQ( module.m_pSubTool->SaveSettings(), pKept );
	EXPECT_EQ( pKept->GetString( "geometry" ), geometry ) << "what was saved stays without windows";
}

TEST( ModuleSession, AConnectionMayEndTwice )
{
	CLoadedModule module;
	const QPointer<QWidget> pWindow = &module.OpenWindow( 0 );
	module.EndConnections();
	EXPECT_TRUE( pWindow.isNull() );
	for ( CFakeConnection &connection : module.m_Connections )
	{
		module.m_pSubTool->ConnectionEnded( &connection );
		module.m_pSubTool->ConnectionStateChanged( &connection );
	}
	EXPECT_TRUE( BudgetWindows().empty() );
}

TEST( ModuleSession, AConnectionMayEndWhileItsWindowIsHiddenOrShowsAMenu )
{
	for ( const bool bMenu : { false, true } )
	{
		SCOPED_TRACE( bMenu );
		CLoadedModule module;
		const QPointer<QWidget> pWindow = &module.OpenWindow( 0 );
		if ( bMenu )
		{
			QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 5, 5 ), pWindow->mapToGlobal( QPoint( 5, 5 ) ) );
			QCoreApplication::sendEvent( pWindow, &event );
			EXPECT_NE( QApplication::activePopupWidget(), nullptr );
		}
		else
			pWindow->hide();
		module.EndConnections();
		EXPECT_TRUE( pWindow.isNull() );
		QApplication::processEvents();
		EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
	}
}
