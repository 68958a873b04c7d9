// Opening recordings: what the user is asked, and what happens when the world changes during a question.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>

#include "recordings/kestoplayerwidget.h"
#include "tests/recordings/recordingwriter.h"

namespace
{
CRecordingWriter Frames( int nFrames, int nNodes )
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

// Calls back in each turn of whatever event loop runs, with the number of the turn.
class CTurns final : public QObject
{
public:
	explicit CTurns( std::function<void( int )> onTurn )
		: m_OnTurn( std::move( onTurn ) )
	{
		m_nTimer = startTimer( 0 );
	}

	int m_nTurn = 0;

protected:
	void timerEvent( QTimerEvent * ) override { m_OnTurn( m_nTurn++ ); }

private:
	std::function<void( int )> m_OnTurn;
	int m_nTimer;
};

class Loading : public testing::Test
{
protected:
	QString Write( const QString &name, const CRecordingWriter &writer )
	{
		const QString path = m_Folder.filePath( name );
		QFile file( path );
		EXPECT_TRUE( file.open( QIODevice::WriteOnly ) );
		file.write(
			reinterpret_cast<const char *>( writer.m_Bytes.data() ), static_cast<qint64>( writer.m_Bytes.size() ) );
		return path;
	}

	struct Question
	{
		QString m_Title, m_Text;
		QMessageBox::StandardButtons m_Buttons;
	};

	// Opens the file and answers the message box, if there is one.
	bool Open( const QString &path, QMessageBox::StandardButton answer )
	{
		const CTurns turns(
			[&]( int )
			{
				if ( auto *pBox = qobject_cast<QMessageBox *>( QApplication::activeModalWidget() ) )
				{
					m_Questions.push_back( { pBox->windowTitle(), pBox->text(), pBox->standardButtons() } );
					pBox->button( answer )->click();
				}
			} );
		return m_Player.OpenRecording( path );
	}

	QTemporaryDir m_Folder;
	std::vector<Question> m_Questions;
	CQKestoPlayerWidget m_Player{ nullptr };
};

TEST_F( Loading, AWholeFileIsShownWithoutAQuestion )
{
	EXPECT_TRUE( Open( Write( "whole.kesto", Frames( 5, 3 ) ), QMessageBox::Cancel ) );
	EXPECT_TRUE( m_Questions.empty() );
	EXPECT_EQ( m_Player.GetRecording()->GetFrameCount(), 5 );
	EXPECT_EQ( m_Player.findChild<QProgressDialog *>(), nullptr ) << "the dialog is gone";
}

TEST_F( Loading, AFileThatIsNotThereHasAnUnsupportedVersion )
{
	EXPECT_FALSE( Open( m_Folder.filePath( "missing.kesto" ), QMessageBox::Cancel ) );
	ASSERT_EQ( m_Questions.size(), 1u );
	EXPECT_EQ( m_Questions[0].m_Title, "File Error" );
	EXPECT_EQ( m_Questions[0].m_Text, "Unsupported file version" );
	EXPECT_EQ( m_Questions[0].m_Buttons, QMessageBox::Cancel );
	EXPECT_EQ( m_Player.GetRecording(), nullptr );
}

TEST_F( Loading, ACutFileOffersTheFramesBeforeTheCut )
{
	CRecordingWriter writer = Frames( 2, 3 );
	writer.BeginFrame().BeginTimings().Entry( 1, 1 ).U8( 1 );
	const QString path = Write( "cut.kesto", writer );
	EXPECT_FALSE( Open( path, QMessageBox::Cancel ) );
	EXPECT_EQ( m_Player.GetRecording(), nullptr );
	EXPECT_TRUE( Open( path, QMessageBox::Ok ) );
	EXPECT_EQ( m_Player.GetRecording()->GetFrameCount(), 2 );
	ASSERT_EQ( m_Questions.size(), 2u );
	EXPECT_EQ( m_Questions[0].m_Title, "File Error, 2 frames recovered. Continue?" );
	EXPECT_EQ( m_Questions[0].m_Text, "Truncated file\nTimings truncated" );
	EXPECT_EQ( m_Questions[0].m_Buttons, QMessageBox::Ok | QMessageBox::Cancel );
}

TEST_F( Loading, StopAnswersFromTheFirstProgressStepOn )
{
	const QString path = Write( "long.kesto", Frames( 200, 1000 ) ); // 600 kB: four steps
	const CTurns turns(
		[&]( int nTurn )
		{
			auto *pDialog = m_Player.findChild<QProgressDialog *>();
			if ( nTurn == 0 )
			{
				ASSERT_NE( pDialog, nullptr );
				EXPECT_EQ( pDialog->labelText(), "Decoding " + path );
				EXPECT_TRUE( pDialog->isVisible() );
				EXPECT_GT( pDialog->value(), 0x20000 );
				EXPECT_LT( pDialog->value(), 0x20000 + 10 );
				pDialog->findChild<QPushButton *>()->click();
			}
		} );
	EXPECT_TRUE( Open( path, QMessageBox::Ok ) );
	ASSERT_EQ( m_Questions.size(), 1u );
	EXPECT_EQ( m_Questions[0].m_Text, "Decoding cancelled\nTimings truncated" );
	// The step after the first one is 131,073 bytes later at least; a frame has 3,007 bytes and the first 19,000.
	const int nFrames = m_Player.GetRecording()->GetFrameCount();
	EXPECT_EQ( m_Questions[0].m_Title, QString( "File Error, %1 frames recovered. Continue?" ).arg( nFrames ) );
	EXPECT_NEAR( nFrames, 1 + ( 2 * 0x20000 - 19000 ) / 3007, 2 );
}

TEST_F( Loading, CancellingTheFileDialogChangesNothing )
{
	const CTurns turns(
		[]( int )
		{
			if ( auto *pDialog = qobject_cast<QFileDialog *>( QApplication::activeModalWidget() ) )
			{
				EXPECT_EQ( pDialog->windowTitle(), "Open kesto recording" );
				pDialog->reject();
			}
		} );
	EXPECT_FALSE( m_Player.OnOpenFile() );
	EXPECT_EQ( m_Player.GetRecording(), nullptr );
}

// What may happen while an operation of the player runs events.
struct Disturbance
{
	const char *m_pName;
	void ( *m_pAct )( QPointer<QWidget> &window, QPointer<CQKestoPlayerWidget> &player, const QString &otherFile );
};

const Disturbance DISTURBANCES[] = {
	{ "the window is deleted",
		[]( QPointer<QWidget> &window, QPointer<CQKestoPlayerWidget> &, const QString & ) { delete window; } },
	{ "the player is deleted",
		[]( QPointer<QWidget> &, QPointer<CQKestoPlayerWidget> &player, const QString & ) { delete player; } },
	{ "the window is hidden",
		[]( QPointer<QWidget> &window, QPointer<CQKestoPlayerWidget> &, const QString & ) { window->hide(); } },
	{ "a second opening is started",
		[]( QPointer<QWidget> &, QPointer<CQKestoPlayerWidget> &player, const QString &otherFile )
		{
			EXPECT_FALSE( player->OnOpenFile() );
			EXPECT_FALSE( player->OpenRecording( otherFile ) );
		} },
};

enum class Operation
{
	Open,
	AskForFile
};

class LoadingDisturbed : public testing::TestWithParam<Disturbance>
{
};

// Closes whatever waits for the user, as a user would.
void AnswerModalWidget( const QString &path )
{
	QWidget *pModal = QApplication::activeModalWidget();
	if ( auto *pBox = qobject_cast<QMessageBox *>( pModal ) )
		pBox->button( QMessageBox::Ok )->click();
	else if ( auto *pDialog = qobject_cast<QFileDialog *>( pModal ) )
	{
		pDialog->selectFile( path );
		static_cast<QDialog *>( pDialog )->done( QDialog::Accepted );
	}
}

// Runs the operation with the disturbance in turn nTurn. False when the operation ended before that turn.
bool RunDisturbed( Operation operation, const Disturbance &disturbance, int nDisturbedTurn, const QString &path )
{
	QPointer<QWidget> pWindow = new QWidget;
	QPointer<CQKestoPlayerWidget> pPlayer = new CQKestoPlayerWidget( pWindow );
	pWindow->show();
	bool bDisturbed = false;
	{
		const CTurns turns(
			[&]( int nTurn )
			{
				if ( nTurn == nDisturbedTurn && pPlayer )
				{
					bDisturbed = true;
					disturbance.m_pAct( pWindow, pPlayer, path );
				}
				else if ( nTurn > nDisturbedTurn + 2 || nTurn > 12 )
					AnswerModalWidget( path );
			} );
		if ( operation == Operation::Open )
			pPlayer->OpenRecording( path );
		else
			pPlayer->OnOpenFile();
	}
	delete pWindow;
	return bDisturbed;
}

TEST_P( LoadingDisturbed, InAnyTurnWhileADamagedFileIsOpened )
{
	QTemporaryDir folder;
	QFile file( folder.filePath( "damaged.kesto" ) );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	CRecordingWriter writer = Frames( 250, 1000 );
	writer.U8( 9 );
	file.write( reinterpret_cast<const char *>( writer.m_Bytes.data() ), static_cast<qint64>( writer.m_Bytes.size() ) );
	file.close();
	int nTurn = 0;
	while ( RunDisturbed( Operation::Open, GetParam(), nTurn, file.fileName() ) && nTurn < 40 )
		nTurn++;
	EXPECT_GE( nTurn, 5 ) << "the operation has at least its progress steps";
}

TEST_P( LoadingDisturbed, InTheFirstTurnsOfTheFileDialog )
{
	QTemporaryDir folder;
	QFile file( folder.filePath( "whole.kesto" ) );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	const CRecordingWriter writer = Frames( 3, 3 );
	file.write( reinterpret_cast<const char *>( writer.m_Bytes.data() ), static_cast<qint64>( writer.m_Bytes.size() ) );
	file.close();
	for ( int nTurn = 0; nTurn < 6; nTurn++ )
		EXPECT_TRUE( RunDisturbed( Operation::AskForFile, GetParam(), nTurn, file.fileName() ) );
}

INSTANTIATE_TEST_SUITE_P( Each, LoadingDisturbed, testing::ValuesIn( DISTURBANCES ),
	[]( const auto &parameter )
	{
		std::string name = parameter.param.m_pName;
		for ( char &c : name )
			c = c == ' ' ? '_' : c;
		return name;
	} );

TEST( MenuDisturbed, ThePlayerMayGoWhileItsMenuIsOpen )
{
	for ( int nDisturbedTurn = 0; nDisturbedTurn < 4; nDisturbedTurn++ )
	{
		QPointer<CQKestoPlayerWidget> pPlayer = new CQKestoPlayerWidget( nullptr );
		QTemporaryDir folder;
		QFile file( folder.filePath( "a.kesto" ) );
		ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
		const CRecordingWriter writer = Frames( 3, 3 );
		file.write(
			reinterpret_cast<const char *>( writer.m_Bytes.data() ), static_cast<qint64>( writer.m_Bytes.size() ) );
		file.close();
		ASSERT_TRUE( pPlayer->OpenRecording( file.fileName() ) );
		pPlayer->show();
		{
			const CTurns turns(
				[&]( int nTurn )
				{
					if ( nTurn == nDisturbedTurn )
						delete pPlayer;
				} );
			pPlayer->OnItemContextMenu( 1, QPoint( 10, 10 ) );
		}
		EXPECT_EQ( pPlayer, nullptr );
	}
}

TEST( MenuDisturbed, AnEntryOfAnotherRecordingShowsNothing )
{
	CQKestoPlayerWidget player( nullptr );
	QTemporaryDir folder;
	QFile file( folder.filePath( "a.kesto" ) );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	const CRecordingWriter writer = Frames( 3, 3 );
	file.write( reinterpret_cast<const char *>( writer.m_Bytes.data() ), static_cast<qint64>( writer.m_Bytes.size() ) );
	file.close();
	ASSERT_TRUE( player.OpenRecording( file.fileName() ) );
	player.show();
	const CTurns turns(
		[&]( int nTurn )
		{
			auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() );
			if ( nTurn == 0 )
				player.OpenRecording( file.fileName() );
			else if ( pMenu )
			{
				pMenu->setActiveAction( pMenu->actions().last() );
				QKeyEvent press( QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier );
				QCoreApplication::sendEvent( pMenu, &press );
			}
		} );
	player.OnItemContextMenu( 1, QPoint( 10, 10 ) );
	EXPECT_EQ( player.GetCurrentTick(), 0 );
}
} // namespace
