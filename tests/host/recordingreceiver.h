// A receiver that keeps what it got and frees it, as a sub-tool's window does.
#pragma once

#include <QByteArray>

#include <functional>
#include <vector>

#include "keel0/memalloc.h"
#include "tessel/itesseldatareceived.h"

class CRecordingReceiver final : public ITesselDataReceived
{
public:
	struct Received
	{
		ITesselConnection *m_pConnection = nullptr;
		uint32_t m_nType = 0;
		uint16_t m_nVersion = 0;
		QByteArray m_Block; // header and payload
	};

	bool OnDataReceived( ITesselConnection *pConnection, uint32_t nChunkType, uint16_t nVersion, uint32_t nLength,
		uint8_t *pBuffer ) override
	{
		m_Received.push_back( { pConnection, nChunkType, nVersion,
			QByteArray( reinterpret_cast<const char *>( pBuffer ), static_cast<int>( nLength ) + 12 ) } );
		g_pMemAlloc->Free( pBuffer );
		m_nInside++;
		m_nDeepest = std::max( m_nDeepest, m_nInside );
		if ( m_OnReceived )
			m_OnReceived( m_Received.size() );
		m_nInside--;
		return true;
	}

	std::vector<Received> m_Received;
	std::function<void( size_t nCount )> m_OnReceived; // runs inside OnDataReceived, for re-entrancy
	int m_nInside = 0;
	int m_nDeepest = 0; // how many calls were ever on the stack at once
};
