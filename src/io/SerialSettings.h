#pragma once

#include <QSerialPort>
#include <QString>

// How to open a serial port. The enumerations are QSerialPort's, kept as int
// so that the record can be filled from combo boxes and settings alike.
struct SerialSettings
{
    QString portName; // a name from the port list or any device path
    int baudRate = 115200;
    int dataBits = QSerialPort::Data8;
    int parity = QSerialPort::NoParity;
    int stopBits = QSerialPort::OneStop;
    int flowControl = QSerialPort::NoFlowControl;
};
