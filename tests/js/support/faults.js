'use strict';

// Tells the stand-ins of the capture service and of Direct3D 11 which calls are to fail; see tests/standins/README.md.

const FAULTS_FILE = 'C:\\standin-faults.txt';
const ACCESS_DENIED = '0x80070005';
const DENIED_TEXT = /HRESULT: 0x80070005/;

module.exports = { ACCESS_DENIED, DENIED_TEXT, FAULTS_FILE };
