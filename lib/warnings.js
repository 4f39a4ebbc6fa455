'use strict';

// What a recording could not do as it was asked and goes on without.

const MESSAGES = {
  cursorStays: 'The mouse pointer is in the recording: leaving it out needs Windows 10 version 2004 or later',
  borderStays: 'Windows may draw its border around what is recorded: keeping it from that needs Windows 11, and an application that it lets do so',
};

/** @returns {{code: string, message: string}} for an event of the module's */
const warningOf = (code) => ({ code, message: MESSAGES[code] });

module.exports = { warningOf };
