#include "events/actions.h"

#include <QCoreApplication>

#include "events/scenarios.h"
#include "events/toolscene.h"
#include "recordings/kestoplayerwidget.h"
#include "support/userloop.h"

namespace
{
void DeleteTheWindow( CToolScene &scene, CUserLoop &, const Scenario & )
{
	delete scene.Window();
}

void CloseTheWindow( CToolScene &scene, CUserLoop &, const Scenario & )
{
	if ( scene.Window() )
		scene.Window()->close();
}

void EndTheConnection( CToolScene &scene, CUserLoop &, const Scenario & )
{
	scene.EndConnection();
}

void LoseTheConnection( CToolScene &scene, CUserLoop &loop, const Scenario & )
{
	scene.SetState( 0 );
	loop.AddStep( [&] { scene.SetState( CFakeConnection::CONNECTED ); } );
}

// New categories, samples, and scopes with names that the tree does not show yet.
void SendABurst( CToolScene &scene, CUserLoop &, const Scenario & )
{
	for ( uint64_t i = 0; i < 20; i++ )
	{
		if ( i % 10 == 0 )
			scene.SendCategories();
		scene.SendSample();
		scene.SendScopes( 1000 + 5 * i, 10 );
	}
}

void StartItAgain( CToolScene &scene, CUserLoop &loop, const Scenario &scenario )
{
	if ( scene.Window() )
		scenario.m_pAddSteps( scene, loop );
}

void OpenAnotherRecording( CToolScene &scene, CUserLoop &loop, const Scenario & )
{
	const auto open = [&]
	{
		if ( auto *pPlayer = scene.Find<CQKestoPlayerWidget>() )
			pPlayer->OpenRecording( scene.m_Files.m_Short );
	};
	loop.AddStep( open );
}

void SaveTheSettings( CToolScene &scene, CUserLoop &, const Scenario & )
{
	scene.m_Tool.SaveSettings();
}

void ShutTheToolDown( CToolScene &scene, CUserLoop &, const Scenario & )
{
	scene.ShutDown();
}

void QuitTheApplication( CToolScene &, CUserLoop &, const Scenario & )
{
	QCoreApplication::quit();
}

constexpr Action ACTIONS[] = {
	{ "TheWindowIsDeleted", &DeleteTheWindow },
	{ "TheWindowIsClosed", &CloseTheWindow },
	{ "TheConnectionEnds", &EndTheConnection },
	{ "TheConnectionIsLostAndMadeAgain", &LoseTheConnection },
	{ "ABurstOfChunksArrives", &SendABurst },
	{ "ItIsStartedAgain", &StartItAgain },
	{ "AnotherRecordingIsOpened", &OpenAnotherRecording },
	{ "SettingsAreSaved", &SaveTheSettings },
	{ "TheHostShutsTheToolDown", &ShutTheToolDown },
	{ "TheApplicationQuits", &QuitTheApplication },
};
} // namespace

std::span<const Action> Actions()
{
	return ACTIONS;
}
