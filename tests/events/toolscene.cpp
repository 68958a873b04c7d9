#include "events/toolscene.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QDialog>
#include <QMenu>

#include "miniprofiler/framebuilder.h"
#include "recordings/kestoplayerwidget.h"
#include "showbudget/budgetpayloads.h"
#include "tests/recordings/recordingfiles.h"

using testing::ElementsAre;

SceneFiles::SceneFiles()
	: m_Short( WriteRecording( m_Folder, "short.kesto", RecordingOf( 3, 3 ) ) )
{
	CRecordingWriter recording = RecordingOf( LONG_FRAMES, 150 );
	m_Long = WriteRecording( m_Folder, "long.kesto", recording );
	m_Damaged = WriteRecording( m_Folder, "damaged.kesto", recording.U8( 9 ) );
}

CToolScene::CToolScene( const SceneFiles &files )
	: m_Files( files )
{
	m_Tool.Connect( &CFakeServices::Factory );
	m_Tool.Initialise();
	m_Tool.SetHost( &m_Host, nullptr );
	KeyValues settings( "Settings" );
	settings.SetInt( "fps_graph_scale", -5 ); // both markers can be reached in a low graph
	m_Tool.LoadSettings( &settings );
	EXPECT_TRUE( m_Tool.Open() );
	m_pWindow = m_Tool.FindWindow( &m_Connection );
	m_pWindow->resize( 800, 600 );
	SendCategories();
	for ( uint32_t i = 0; i < SAMPLES; i++ )
		SendSample();
}

void CToolScene::Deliver( uint32_t nType, std::span<const uint8_t> payload )
{
	if ( !m_pWindow || m_bConnectionEnded )
		return;
	EXPECT_TRUE( m_Connection.Deliver( nType, payload ) );
}

void CToolScene::SendCategories()
{
	Deliver( CHUNK_PCAT, CategoriesPayload( { { "Render", 10, 20, 30 }, { "Audio", 40, 50, 60 } } ) );
}

void CToolScene::SendSample()
{
	Deliver( CHUNK_PCPU, SamplePayload( { 8000, 4000 } ) );
}

void CToolScene::SendScopes( uint64_t nFirst, uint64_t nCount )
{
	CFrameBuilder frame( 100 );
	frame.BeginData( true );
	for ( uint64_t i = 0; i < nCount; i++ )
		frame.Entry( nFirst + i, i > 0 ? nFirst : 0, 1000 * ( i + 1 ), 1 );
	frame.End();
	frame.BeginNames( 1'000'000'000, static_cast<int32_t>( nCount ) );
	for ( uint64_t i = 0; i < nCount; i++ )
		frame.Name( nFirst + i, 0, "render " + std::to_string( nFirst + i ), "Render\nDraw\nsrc/draw.cpp\n\nengine" );
	frame.End();
	Deliver( CHUNK_PMPF, frame.Payload() );
}

void CToolScene::SetState( int nState )
{
	if ( m_bConnectionEnded )
		return;
	m_Connection.m_nState = nState;
	m_Tool.ConnectionStateChanged( &m_Connection );
}

void CToolScene::EndConnection()
{
	m_Host.m_pCurrent = nullptr;
	m_Tool.ConnectionEnded( &m_Connection );
	m_Connection.End();
	m_bConnectionEnded = true;
}

void CToolScene::ShutDown()
{
	if ( m_bShutDown )
		return;
	m_bShutDown = true;
	m_Tool.ShutDown();
	m_Tool.Disconnect();
	m_Connection.End();
	m_bConnectionEnded = true;
	m_Host.End();
	EXPECT_THAT( m_Services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0", "remove 0", "unregister" ) );
	QCoreApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
	EXPECT_EQ( m_pWindow, nullptr );
}

void CToolScene::CheckUsable()
{
	QCoreApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
	QCoreApplication::processEvents();
	EXPECT_EQ( QApplication::activeModalWidget(), nullptr );
	if ( QWidget *pPopup = QApplication::activePopupWidget() )
		pPopup->close();
	EXPECT_FALSE( m_bConnectionEnded && m_pWindow ) << "a window outlives its connection";
	if ( !m_pWindow )
		return;
	if ( IsConnected() )
		CheckLiveData();
	CheckPlayer();
}

void CToolScene::CheckLiveData()
{
	EXPECT_TRUE( m_Tool.Open() );
	m_pWindow->StartSampling();
	SendCategories();
	SendSample();
	SendSample();
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 2u );
}

void CToolScene::CheckPlayer()
{
	auto &player = *Find<CQKestoPlayerWidget>();
	EXPECT_TRUE( player.OpenRecording( m_Files.m_Short ) );
	EXPECT_EQ( player.GetRecording()->GetFrameCount(), 3 );
	EXPECT_EQ( player.findChild<QDialog *>(), nullptr );
	EXPECT_EQ( player.findChild<QMenu *>( QString(), Qt::FindDirectChildrenOnly ), nullptr );
}
