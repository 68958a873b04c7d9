// Whatever a user is at that takes more than one turn of an event loop, with whatever may happen in any of these turns.
#include <gtest/gtest.h>

#include "events/actions.h"
#include "events/scenarios.h"
#include "events/toolscene.h"
#include "support/userloop.h"
#include "support/watchdog.h"
#include "tests/recordings/useranswers.h"

namespace
{
class EventOrder : public testing::TestWithParam<std::tuple<Scenario, Action>>
{
protected:
	// Whether the action's turn came before the scenario was over.
	static bool Run( const SceneFiles &files, int nTurn )
	{
		const Scenario &scenario = std::get<Scenario>( GetParam() );
		const Action &action = std::get<Action>( GetParam() );
		const std::string what =
			std::string( scenario.m_pName ) + " while " + action.m_pName + " in turn " + std::to_string( nTurn );
		SCOPED_TRACE( what );
		const CWatchdog watchdog( what );
		CToolScene scene( files );
		if ( scenario.m_pPrepare )
			scenario.m_pPrepare( scene );
		CUserLoop loop( [&] { AnswerWhatWaits( files.m_Long ); } );
		scenario.m_pAddSteps( scene, loop );
		const bool bCame = loop.Run( nTurn, [&] { action.m_pAct( scene, loop, scenario ); } );
		if ( !bCame )
			scenario.m_pCheck( scene, loop );
		scene.CheckUsable();
		return bCame;
	}
};

TEST_P( EventOrder, EndsWithoutHarmInEachTurn )
{
	const SceneFiles files;
	int nTurn = 0;
	while ( Run( files, nTurn ) && !HasFailure() )
		nTurn++;
	EXPECT_GE( nTurn, 5 ) << "the scenario takes some turns";
}

INSTANTIATE_TEST_SUITE_P(, EventOrder,
	testing::Combine( testing::ValuesIn( Scenarios().begin(), Scenarios().end() ),
		testing::ValuesIn( Actions().begin(), Actions().end() ) ),
	[]( const auto &parameter )
	{
		return std::string( std::get<Scenario>( parameter.param ).m_pName ) + "While" +
			   std::get<Action>( parameter.param ).m_pName;
	} );
} // namespace
