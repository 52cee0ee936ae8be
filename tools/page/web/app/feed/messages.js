// What the program sends and is asked, as types. Times are milliseconds since 1970; null: never.

/**
 * @typedef {'good'|'stale'|'bad'|'never'|'unconfirmed'} Quality
 *
 * @typedef {object} Variable
 * @property {number} index
 * @property {string} name
 * @property {string} address
 * @property {number} station
 * @property {string} type
 * @property {string} format
 * @property {number} elements
 * @property {boolean} writable
 * @property {boolean} isBit
 * @property {number|null} low
 * @property {number|null} high
 *
 * @typedef {[index: number, text: string, number: number|null, quality: Quality, reason: string,
 *            readAt: number|null, changedAt: number|null]} ValueRow
 *
 * @typedef {object} Faults
 * @property {number} timeouts
 * @property {number} retries
 * @property {number} giveUps
 * @property {number} late
 * @property {number} exceptions
 * @property {number} lostConnections
 * @property {number} failedConnects
 *
 * @typedef {object} Recording
 * @property {'on'|'failed'} state
 * @property {string} text
 * @property {number} bytes
 * @property {number} limit
 * @property {number|null} from
 * @property {number|null} to
 *
 * @typedef {object} Replay
 * @property {number} from
 * @property {number} to
 * @property {number} at
 * @property {boolean} playing
 * @property {number} speed
 *
 * `refusing`: connected, and nothing but refusals of late. `unknown`: of a recording that does not say it.
 * @typedef {'connected'|'silent'|'refusing'|'connecting'|'lost'|'never'|'unknown'} LinkWord
 *
 * @typedef {object} Status
 * @property {number} now
 * @property {string} program
 * @property {string} version
 * @property {string} project
 * @property {string} epoch
 * @property {number} startedAt
 * @property {string} controller
 * @property {{state: LinkWord, text: string, since: number|null}} link
 * @property {{ms: number|null, elements: number, requests: number}} pass
 * @property {number} planGeneration another one: other requests of a pass
 * @property {{medianMs: number|null, p99Ms: number|null}} roundTrip
 * @property {Faults} lastMinute
 * @property {Faults} total
 * @property {{allowed: boolean, only: string[]|null, text: string}} writes
 * @property {Recording|null} recording
 * @property {number} missed
 * @property {{from: number|null, bytes: number, limitBytes: number}|null} history
 * @property {Replay|null} replay
 *
 * @typedef {object} PageEvent
 * @property {number} id
 * @property {number} at
 * @property {string} kind
 * @property {string} text
 * @property {string|null} variable
 * @property {string|null} address
 * @property {boolean} bad
 *
 * @typedef {object} Snapshot
 * @property {'snapshot'} kind
 * @property {string} epoch
 * @property {number} sequence
 * @property {number} now
 * @property {number} generation
 * @property {Status} status
 * @property {Variable[]} variables
 * @property {ValueRow[]} values
 * @property {PageEvent[]} events
 *
 * @typedef {object} Changes
 * @property {'changes'} kind
 * @property {string} epoch
 * @property {number} sequence
 * @property {number} now
 * @property {number} generation
 * @property {Status} status
 * @property {ValueRow[]} values
 * @property {PageEvent[]} events
 *
 * @typedef {object} History
 * @property {string} address
 * @property {number} from
 * @property {number} to
 * @property {number|null} oldest
 * @property {'memory'|'recording'|'both'} source
 * @property {boolean} isBit
 * @property {number[]} t
 * @property {number[]} min
 * @property {number[]} max
 * @property {number[]} last
 * @property {[from: number, to: number|null, reason: string][]} gaps
 * @property {PageEvent[]} events
 *
 * @typedef {object} Frame
 * @property {number} id
 * @property {number} at
 * @property {number|null} beforeMs
 * @property {string} way
 * @property {string} text
 * @property {string|null} bytes
 * @property {boolean} bad
 * @property {number|null} elapsedMs
 *
 * @typedef {object} Step
 * @property {string} step
 * @property {string} title
 * @property {boolean|null} ok
 * @property {string} text
 * @property {string|null} detail
 *
 * @typedef {object} Explanation
 * @property {string} address
 * @property {string} name
 * @property {Step[]} steps
 * @property {string} conclusion
 *
 * @typedef {object} PlannedRequest
 * @property {number} number
 * @property {number} of
 * @property {number} station
 * @property {string} class
 * @property {string} function
 * @property {number} elements
 * @property {number} bytes
 * @property {string} first
 * @property {string} last
 * @property {string} ends
 * @property {string[]} variables
 *
 * @typedef {object} Plan
 * @property {number} generation
 * @property {PlannedRequest[]} requests
 * @property {string[]} hints
 * @property {number} passElements
 *
 * @typedef {object} WriteAnswer
 * @property {'done'|'refused'|'not sent'|'unknown'|'partial'} outcome
 * @property {string} text
 * @property {string|null} old
 * @property {{text: string, number: number|null, quality: Quality, reason: string}|null} readBack
 */
export {};
