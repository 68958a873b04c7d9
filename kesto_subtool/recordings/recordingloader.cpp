#include "recordings/recordingloader.h"

#include <QMessageBox>
#include <QPointer>

#include "recordings/kestofilereader.h"

// Whether to go on with nFrames frames. The box lies on the heap, because it goes with its parent.
static bool AskAboutDamage( QWidget *pParent, int nFrames, const QString &problems )
{
	QString title = QStringLiteral( "File Error" );
	QMessageBox::StandardButtons buttons = QMessageBox::Cancel;
	if ( nFrames > 0 )
	{
		title += QString::asprintf( ", %d frames recovered. Continue?", nFrames );
		buttons |= QMessageBox::Ok;
	}
	QPointer<QMessageBox> pBox = new QMessageBox( QMessageBox::Warning, title, problems, buttons, pParent );
	pBox->setTextFormat( Qt::PlainText );
	const int nAnswer = pBox->exec();
	delete pBox;
	return nAnswer == QMessageBox::Ok;
}

CRefPtr<CKestoFile> LoadRecording( QWidget *pParent, const QString &fileName )
{
	const QPointer<QWidget> pAlive( pParent );
	CRefPtr<CKestoFile> pFile;
	bool bGood = false;
	QString problems;
	{
		// Its dialog and the bytes go before anything is asked.
		CQKestoFileReader reader( pParent, fileName );
		pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
		bGood = reader.m_bGood;
		problems = QString::fromLocal8Bit( reader.GetFailureText().c_str() );
	}
	if ( !pAlive )
		return {};
	if ( !bGood && !AskAboutDamage( pParent, pFile->GetFrameCount(), problems ) )
		return {};
	return pAlive ? pFile : CRefPtr<CKestoFile>();
}
