// Stands in for an engine where a sub-tool shows a recording.
#pragma once

#include <QByteArray>
#include <QString>

#include "tessel/itesselconnection.h"

// Sub-tools have one window for each connection, and a file is no engine: so a recording gets a connection of its own,
// which is never connected, takes no chunk and delivers none.
class CRecordingConnection final : public ITesselConnection
{
public:
	static constexpr int STATE = 0; // as of a connection that was never made

	explicit CRecordingConnection( const QString &fileName );

	// The file's name without its folder, as one line.
	const char *GetName() const override { return m_Name.constData(); }
	void RegisterReceiver( uint32_t, uint16_t, ITesselDataReceived * ) override {}
	int GetState() const override { return STATE; }
	bool SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer ) override;

private:
	QByteArray m_Name;
};
