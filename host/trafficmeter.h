// How much arrives on a connection.
#pragma once

#include <QString>

#include <cstdint>

// Counts what arrives and turns it into rates at every Measure.
class CTrafficMeter
{
public:
	void AddChunk( uint64_t nBytes )
	{
		m_nChunks++;
		m_nBytes += nBytes;
	}

	// Rates over the time since the last Measure (or Restart). flNow is in seconds; without time between the two
	// nothing changes.
	void Measure( double flNow );

	// Forgets everything: a new session begins at flNow.
	void Restart( double flNow );

	double ChunksPerSecond() const { return m_flChunksPerSecond; }
	double BytesPerSecond() const { return m_flBytesPerSecond; }

private:
	uint64_t m_nChunks = 0; // since the last Measure
	uint64_t m_nBytes = 0;
	double m_flSince = 0.0;
	double m_flChunksPerSecond = 0.0;
	double m_flBytesPerSecond = 0.0;
};

// "0 B/s", "999 B/s", "1.0 kB/s", "12.3 MB/s": decimal units, one decimal place from kB on.
QString FormatByteRate( double flBytesPerSecond );
