CREATE TABLE purchases (
  id INTEGER PRIMARY KEY AUTOINCREMENT, asked_at REAL NOT NULL, rate_id TEXT NOT NULL, key_name TEXT NOT NULL,
  recipient TEXT NOT NULL, keep_recipient INTEGER NOT NULL, shipment TEXT NOT NULL, label BLOB, customs_pdf BLOB,
  printed INTEGER NOT NULL DEFAULT 0
);
