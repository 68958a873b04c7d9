#include "recordingconnection.h"

#include <QFileInfo>

#include "keel0/memalloc.h"

CRecordingConnection::CRecordingConnection( const QString &fileName )
	: m_Name( QFileInfo( fileName ).fileName().toUtf8() )
{
}

bool CRecordingConnection::SendChunk( uint32_t, uint16_t, uint32_t, uint8_t *pBuffer )
{
	g_pMemAlloc->Free( pBuffer );
	return false;
}
