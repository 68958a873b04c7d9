// Reads a recording from a file, with a progress dialog that can stop it.
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QPointer>
#include <QString>

#include "recordings/kestomemoryreader.h"

class QFile;
class QProgressBar;
class QProgressDialog;
class QWidget;

// The whole file is in memory before the first byte is handed out. Each progress step runs the events that wait; what
// was there before (the parent, the dialog) may be gone after it, which stops the reading. Without a dialog when the
// file cannot be opened: the reader has then failed from the start, without a text of its own.
class CQKestoFileReader final : public CKestoMemoryReader
{
public:
	CQKestoFileReader( QWidget *pParent, const QString &fileName );
	~CQKestoFileReader() override;

protected:
	bool IsCancelled() override;
	void OnProgress( int64_t nPosition ) override;

private:
	void ReadFile( const QString &fileName );
	void ReadWhole( QFile &file );
	void ShowDialog( QWidget *pParent, const QString &fileName );

	QByteArray m_Data;
	QElapsedTimer m_LastPicture;         // of the bar
	QPointer<QProgressDialog> m_pDialog; // goes with its parent or with the reader, whichever is first
	QPointer<QProgressBar> m_pBar;
};
