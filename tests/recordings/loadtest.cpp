// Opening recordings: what the user sees and is asked.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>

#include "recordings/kestoplayerwidget.h"
#include "support/eventturns.h"
#include "tests/recordings/recordingfiles.h"

namespace
{
class Loading : public testing::Test
{
protected:
	QString Write( const QString &name, const CRecordingWriter &writer )
	{
		return WriteRecording( m_Folder, name, writer );
	}

	struct Question
	{
		QString m_Title, m_Text;
		QMessageBox::StandardButtons m_Buttons;
		Qt::TextFormat m_Format;
		QMessageBox::Icon m_Icon;
		bool m_bHasDefault;
	};

	// Opens the file and answers the message box, if there is one.
	bool Open( const QString &path, QMessageBox::StandardButton answer )
	{
		const CEventTurns turns(
			[&]( int )
			{
				if ( auto *pBox = qobject_cast<QMessageBox *>( QApplication::activeModalWidget() ) )
				{
					EXPECT_EQ( pBox->parentWidget(), &m_Player );
					m_Questions.push_back( { pBox->windowTitle(), pBox->text(), pBox->standardButtons(),
						pBox->textFormat(), pBox->icon(), pBox->defaultButton() != nullptr } );
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
	EXPECT_TRUE( Open( Write( "whole.kesto", RecordingOf( 5, 3 ) ), QMessageBox::Cancel ) );
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
	EXPECT_EQ( m_Questions[0].m_Icon, QMessageBox::Warning );
	EXPECT_EQ( m_Player.GetRecording(), nullptr );
}

TEST_F( Loading, ACutFileOffersTheFramesBeforeTheCut )
{
	CRecordingWriter writer = RecordingOf( 2, 3 );
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
	EXPECT_EQ( m_Questions[0].m_Icon, QMessageBox::Warning );
	EXPECT_FALSE( m_Questions[0].m_bHasDefault );
}

TEST_F( Loading, AFileOfOneStepRunsNoEvents )
{
	const QString path = Write( "short.kesto", RecordingOf( 35, 1000 ) );
	ASSERT_LT( QFileInfo( path ).size(), 131072 );
	int nTurns = 0;
	const CEventTurns turns( [&]( int ) { nTurns++; } );
	EXPECT_TRUE( m_Player.OpenRecording( path ) );
	EXPECT_EQ( nTurns, 0 ) << "no progress is seen, and nothing can stop it";
}

TEST_F( Loading, StopAnswersFromTheFirstProgressStepOn )
{
	const QString path = Write( "long.kesto", RecordingOf( 200, 1000 ) ); // 600 kB: four steps
	const CEventTurns turns(
		[&]( int nTurn )
		{
			auto *pDialog = m_Player.findChild<QProgressDialog *>();
			if ( nTurn == 0 )
			{
				ASSERT_NE( pDialog, nullptr );
				EXPECT_EQ( pDialog->labelText(), "Decoding " + path );
				EXPECT_TRUE( pDialog->isVisible() );
				EXPECT_TRUE( pDialog->isModal() );
				EXPECT_EQ( pDialog->minimum(), 0 );
				EXPECT_EQ( pDialog->maximum(), static_cast<int>( QFileInfo( path ).size() ) );
				EXPECT_EQ( pDialog->findChild<QPushButton *>()->text(), "Stop" );
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

TEST_F( Loading, AFileNameIsShownAsItStands )
{
	// With a line feed, and a character that would turn the direction of what follows it.
	const QString name = "<h1>a &amp; b\n\xE2\x80\xAE" + QString( 150, 'n' ) + ".kesto";
	const QString path = Write( name, RecordingOf( 100, 1000 ).U8( 9 ) );
	int nShown = 0;
	const CEventTurns turns(
		[&]( int )
		{
			const auto *pDialog = m_Player.findChild<QProgressDialog *>();
			if ( !pDialog )
				return;
			nShown++;
			const auto *pLabel = pDialog->findChild<QLabel *>();
			EXPECT_EQ( pDialog->labelText().remove( QChar( 0x200B ) ),
				"Decoding " +
					QString( path ).replace( QStringLiteral( "\n\u202E" ), QStringLiteral( "\uFFFD\uFFFD" ) ) );
			EXPECT_EQ( pLabel->textFormat(), Qt::PlainText );
			EXPECT_LT( pDialog->width(), 1000 ) << "a long name is broken into lines";
		} );
	EXPECT_TRUE( Open( path, QMessageBox::Ok ) );
	EXPECT_GE( nShown, 2 );
	ASSERT_EQ( m_Questions.size(), 1u );
	EXPECT_EQ( m_Questions[0].m_Format, Qt::PlainText );
}

TEST_F( Loading, CancellingTheFileDialogChangesNothing )
{
	const CEventTurns turns(
		[this]( int )
		{
			if ( auto *pDialog = qobject_cast<QFileDialog *>( QApplication::activeModalWidget() ) )
			{
				EXPECT_EQ( pDialog->windowTitle(), "Open kesto recording" );
				EXPECT_EQ(
					pDialog->nameFilters(), ( QStringList{ ".kesto Recordings (*.kesto)", "All Files (*.*)" } ) );
				EXPECT_EQ( pDialog->fileMode(), QFileDialog::ExistingFile );
				EXPECT_EQ( pDialog->acceptMode(), QFileDialog::AcceptOpen );
				EXPECT_EQ( pDialog->parentWidget(), &m_Player );
				pDialog->reject();
			}
		} );
	EXPECT_FALSE( m_Player.OnOpenFile() );
	EXPECT_EQ( m_Player.GetRecording(), nullptr );
}
} // namespace
