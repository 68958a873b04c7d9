// What the user does to the player: menus, keys, files.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QSlider>
#include <algorithm>

#include "keel0/keyvalues.h"
#include "keel0/platform.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "recordings/kestotexts.h"
#include "recordings/recordingloader.h"

static constexpr const char *DIRECTORY_KEY = "recording_directory";

void CQKestoPlayerWidget::LoadSettings( const KeyValues &settings )
{
	m_Directory = QString::fromUtf8( settings.GetString( DIRECTORY_KEY ) );
}

void CQKestoPlayerWidget::SaveSettings( KeyValues &settings ) const
{
	if ( !m_Directory.isEmpty() ) // what another window knows stays
		settings.SetString( DIRECTORY_KEY, m_Directory.toUtf8().constData() );
}

void CQKestoPlayerWidget::OnItemContextMenu( int nItem, const QPoint &ptGlob )
{
	if ( !m_pFile )
		return;
	// The menu runs events: it goes with the player, and the recording may be another one when it comes back.
	const QPointer<CQKestoPlayerWidget> pAlive( this );
	const CRefPtr<CKestoFile> pFile = m_pFile;
	QPointer<QMenu> pMenu = new QMenu( this );
	QAction *pCopy = pMenu->addAction( tr( "&Copy" ) );
	for ( const NodeMenuEntry &entry : MakeNodeMenu( *pFile, nItem, m_nCurrentTick ) )
		pMenu->addAction( entry.m_Text )->setData( entry.m_nFrame );
	const QAction *pChosen = pMenu->exec( ptGlob );
	const bool bCopy = pMenu && pChosen == pCopy;
	const int nFrame = pMenu && pChosen ? pChosen->data().toInt() : -1;
	delete pMenu;
	if ( !pAlive || !pChosen )
		return;
	if ( bCopy )
		Plat_SetClipboardText( NodeNameText( *pFile, nItem ).toUtf8().constData() );
	else if ( pFile == m_pFile )
		ShowFrame( nFrame );
}

bool CQKestoPlayerWidget::OnOpenFile()
{
	if ( m_bOpening )
		return false;
	const QPointer<CQKestoPlayerWidget> pAlive( this );
	m_bOpening = true;
	const QString fileName = AskForFile();
	if ( !pAlive )
		return false;
	m_bOpening = false;
	return !fileName.isEmpty() && OpenRecording( fileName );
}

// The dialog lies on the heap, because it goes with the player.
QString CQKestoPlayerWidget::AskForFile()
{
	QPointer<QFileDialog> pDialog = new QFileDialog(
		this, tr( "Open kesto recording" ), m_Directory, tr( ".kesto Recordings (*.kesto);;All Files (*.*)" ) );
	pDialog->setFileMode( QFileDialog::ExistingFile );
	QString fileName;
	if ( pDialog->exec() == QDialog::Accepted && pDialog )
		fileName = pDialog->selectedFiles().value( 0 );
	delete pDialog;
	return fileName;
}

bool CQKestoPlayerWidget::OpenRecording( const QString &fileName )
{
	if ( m_bOpening )
		return false;
	const QPointer<CQKestoPlayerWidget> pAlive( this );
	m_bOpening = true;
	m_Directory = QFileInfo( fileName ).absolutePath();
	const CRefPtr<CKestoFile> pFile = LoadRecording( this, fileName );
	if ( !pAlive )
		return false;
	m_bOpening = false;
	if ( pFile )
		SetRecording( pFile.Get() );
	return static_cast<bool>( pFile );
}

void CQKestoPlayerWidget::ShowFrame( int nFrame )
{
	OnSetTick( nFrame );
	m_pTickSlider->setValue( nFrame );
}

void CQKestoPlayerWidget::ShowSlowestFrame()
{
	ShowFoundFrame( m_FrameFinder.FindSlowest() );
}

void CQKestoPlayerWidget::ShowWholeFrame()
{
	m_pFlamegraph->ShowWholeFrame();
}

// -1 = nothing was found.
void CQKestoPlayerWidget::ShowFoundFrame( int nFrame )
{
	if ( nFrame >= 0 )
		ShowFrame( nFrame );
}

// Whether the key means something here.
bool CQKestoPlayerWidget::HandleKey( const QKeyEvent &event )
{
	const bool bShift = event.modifiers() & Qt::ShiftModifier;
	if ( m_nCurrentTick < 0 || ( event.modifiers() & ~( Qt::ShiftModifier | Qt::KeypadModifier ) ) )
		return false;
	const int nStep = bShift ? 10 : 1;
	switch ( event.key() )
	{
		case Qt::Key_Left:
			ShowFrame( std::max( m_nCurrentTick - nStep, 0 ) );
			return true;
		case Qt::Key_Right:
			ShowFrame( std::min( m_nCurrentTick + nStep, m_pFile->GetFrameCount() - 1 ) );
			return true;
		case Qt::Key_N:
			ShowFoundFrame( bShift ? m_FrameFinder.FindPreviousSlow( m_nCurrentTick )
								   : m_FrameFinder.FindNextSlow( m_nCurrentTick ) );
			return true;
		case Qt::Key_M:
			ShowSlowestFrame();
			return true;
		case Qt::Key_F:
			ShowWholeFrame();
			return true;
		default:
			return false;
	}
}

bool CQKestoPlayerWidget::eventFilter( QObject *pWatched, QEvent *pEvent )
{
	if ( pEvent->type() == QEvent::KeyPress && HandleKey( *static_cast<QKeyEvent *>( pEvent ) ) )
		return true;
	return QWidget::eventFilter( pWatched, pEvent );
}

void CQKestoPlayerWidget::keyPressEvent( QKeyEvent *pEvent )
{
	if ( !HandleKey( *pEvent ) )
		QWidget::keyPressEvent( pEvent );
}

static QString DroppedFile( const QDropEvent &event )
{
	const QList<QUrl> urls = event.mimeData()->urls();
	return urls.size() == 1 ? urls[0].toLocalFile() : QString();
}

void CQKestoPlayerWidget::dragEnterEvent( QDragEnterEvent *pEvent )
{
	if ( !DroppedFile( *pEvent ).isEmpty() )
		pEvent->acceptProposedAction();
}

void CQKestoPlayerWidget::dropEvent( QDropEvent *pEvent )
{
	const QString fileName = DroppedFile( *pEvent );
	if ( fileName.isEmpty() )
		return;
	pEvent->acceptProposedAction();
	// Later, so that whoever the file comes from is not kept waiting.
	QMetaObject::invokeMethod(
		this, [this, fileName] { OpenRecording( fileName ); }, Qt::QueuedConnection );
}
