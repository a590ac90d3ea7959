-- Leaves the machine's Bluetooth devices alone. For WirePlumber 0.4.
bluez_monitor.enabled = false
