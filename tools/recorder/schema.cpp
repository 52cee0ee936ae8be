// The tables.
#include "schema.h"

namespace tavmir::recorder
{

const char kSchema[] = R"(
CREATE TABLE about (key TEXT PRIMARY KEY, value) WITHOUT ROWID;
CREATE TABLE project (name TEXT, bytes BLOB);
CREATE TABLE variable (id INTEGER PRIMARY KEY, address TEXT NOT NULL, name TEXT NOT NULL,
  type TEXT NOT NULL, format TEXT NOT NULL, words INTEGER NOT NULL, station INTEGER NOT NULL);
CREATE TABLE polled (at INTEGER NOT NULL, place INTEGER NOT NULL, variable INTEGER NOT NULL,
  PRIMARY KEY (at, place)) WITHOUT ROWID;
CREATE TABLE opening (variable INTEGER PRIMARY KEY, value, read_at INTEGER, quality INTEGER NOT NULL,
  reason TEXT);
CREATE TABLE sample (variable INTEGER, at INTEGER, value, PRIMARY KEY (variable, at)) WITHOUT ROWID;
CREATE TABLE quality (variable INTEGER, at INTEGER, quality INTEGER NOT NULL, reason TEXT,
  PRIMARY KEY (variable, at)) WITHOUT ROWID;
CREATE TABLE quality_word (quality INTEGER PRIMARY KEY, word TEXT NOT NULL);
INSERT INTO quality_word VALUES (0, 'never'), (1, 'good'), (2, 'stale'), (3, 'bad'),
  (4, 'unconfirmed');
CREATE TABLE event (id INTEGER PRIMARY KEY, at INTEGER NOT NULL, until INTEGER, kind TEXT NOT NULL,
  subject TEXT, text TEXT);
CREATE INDEX event_at ON event (at);
CREATE TABLE minute (at INTEGER PRIMARY KEY, until INTEGER NOT NULL, requests INTEGER,
  replies INTEGER, retries INTEGER, give_ups INTEGER, timeouts INTEGER, exceptions INTEGER,
  late_frames INTEGER, connects INTEGER, connect_failures INTEGER, lost_connections INTEGER,
  bytes_sent INTEGER, bytes_received INTEGER, missed INTEGER, round_trip_min REAL,
  round_trip_median REAL, round_trip_p99 REAL, round_trip_max REAL);
CREATE VIEW samples AS SELECT strftime('%Y-%m-%dT%H:%M:%S', s.at / 1000000, 'unixepoch') ||
    printf('.%03dZ', s.at / 1000 % 1000) AS time,
  v.address AS address, s.value AS value,
  (SELECT word FROM quality_word WHERE quality = coalesce(
    (SELECT q.quality FROM quality q WHERE q.variable = s.variable AND q.at <= s.at
      ORDER BY q.at DESC LIMIT 1),
    (SELECT o.quality FROM opening o WHERE o.variable = s.variable), 0)) AS quality
  FROM sample s JOIN variable v ON v.id = s.variable;
)";

} // namespace tavmir::recorder
