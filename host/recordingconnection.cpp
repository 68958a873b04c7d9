#include "recordingconnection.h"

#include <QFileInfo>

#include "displaytext.h"
#include "keel0/memalloc.h"

namespace
{
constexpr int LONGEST_NAME = 255; // characters; no file system has longer ones
} // namespace

CRecordingConnection::CRecordingConnection( const QString &fileName )
	: m_Name( ToDisplayLine( QFileInfo( fileName ).fileName(), LONGEST_NAME ).toUtf8() )
{
}

bool CRecordingConnection::SendChunk( uint32_t, uint16_t, uint32_t, uint8_t *pBuffer )
{
	g_pMemAlloc->Free( pBuffer );
	return false;
}
