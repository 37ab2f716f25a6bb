CREATE TABLE shipments (
  id INTEGER PRIMARY KEY AUTOINCREMENT, created_at REAL NOT NULL, carrier TEXT, service TEXT, postage REAL,
  recipient TEXT, services TEXT, tracking TEXT, tracking_url TEXT, weight TEXT, description TEXT, reference TEXT,
  transaction_id TEXT, label_url TEXT, status TEXT, test_mode INTEGER, zpl BLOB
);
