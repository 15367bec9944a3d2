/* Motor test bench, rig 2: a 3 kW PMSM on a hysteresis brake.
 * The controller board streams one line every 20 ms over USB serial at 115200 baud:
 *   <device time> SPEED=... TORQUE=... ST_MOTOR=RUNNING ERR=E_OVERTEMP ...
 * Mapping arguments are (name, offset, scale): physical = raw * scale + offset.
 */

// Signals: name, label, type
DASHBOARD_SIGNAL(SPEED, "Motor Speed [rpm]", float)
DASHBOARD_SIGNAL(TORQUE, "Shaft Torque [Nm]", float)
DASHBOARD_SIGNAL(PHASE_I, "Phase Current [A]", float)
DASHBOARD_SIGNAL(BUS_V, "DC Bus Voltage [V]", float)
DASHBOARD_SIGNAL(WINDING_T, "Winding Temperature [degC]", float)
DASHBOARD_SIGNAL(BEARING_T, "Bearing Temperature [degC]", float)
DASHBOARD_SIGNAL(COOLANT_T, "Coolant Temperature [degC]", float)
DASHBOARD_SIGNAL(VIBRATION, "Vibration [mm/s]", float)
DASHBOARD_SIGNAL(COOLANT_FLOW, "Coolant Flow [l/min]", float)
DASHBOARD_SIGNAL(SUPPLY_P, "Supply Pressure [bar]", float)
DASHBOARD_SIGNAL(LOAD_SET, "Load Setpoint [%]", int)

// The analogue channels arrive as 12-bit ADC counts.
DASHBOARD_MAPPING(PHASE_I, -50.0, 0.0244)       // +-50 A hall sensor, mid-scale is 0 A
DASHBOARD_MAPPING(BUS_V, 0, 0.1221)             // 0..500 V divider
DASHBOARD_MAPPING(WINDING_T, -40, 0.0488)       // PT100 transmitter, -40..160 degC
DASHBOARD_MAPPING(BEARING_T, -40, 0.0488)
DASHBOARD_MAPPING(COOLANT_T, -40, 0.0488)
DASHBOARD_MAPPING(SUPPLY_P, -2.5, 0.0061)       // 4-20 mA, 0..10 bar
DASHBOARD_MAPPING(COOLANT_FLOW, 0, 0.01)        // pulse counter, centilitres per minute

// Motor controller
DASHBOARD_STATE_GROUP(MOTOR, "Motor")
DASHBOARD_STATE(MOTOR, IDLE, "Idle")
DASHBOARD_STATE(MOTOR, RUNNING, "Running")
DASHBOARD_STATE(MOTOR, PAUSED, "Paused")
DASHBOARD_STATE(MOTOR, STOPPED, "Stopped")

// Test sequence
DASHBOARD_STATE_GROUP(TEST, "Test Sequence")
DASHBOARD_STATE(TEST, WARMUP, "Warm-up")
DASHBOARD_STATE(TEST, LOAD_STEP, "Load Step")
DASHBOARD_STATE(TEST, PASS, "Passed")
DASHBOARD_STATE(TEST, FAIL, "Failed")

// Coolant loop
DASHBOARD_STATE_GROUP(COOLANT, "Coolant Loop")
DASHBOARD_STATE(COOLANT, FLOW_IN, "Flow in range")
DASHBOARD_STATE(COOLANT, FLOW_OUT, "Flow out of range")

// Errors: name, code, text
DASHBOARD_ERROR(E_OVERTEMP, 101, "Winding over temperature")
DASHBOARD_ERROR(E_OVERCURRENT, 102, "Phase current above limit")
DASHBOARD_ERROR(E_UNDERVOLT, 103, "DC bus under voltage")
DASHBOARD_ERROR(E_VIBRATION, 201, "Vibration above alarm level")
DASHBOARD_ERROR(E_COOLANT, 202, "Coolant flow lost")
DASHBOARD_ERROR(E_ENCODER, 301, "Encoder signal lost")
DASHBOARD_ERROR(E_ESTOP, 900, "Emergency stop pressed")
