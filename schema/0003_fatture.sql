-- What the list of received invoices shows, one row for each document of a file. A filed invoice never changes, so this is
-- written once, when it is filed; a list of a year then reads no file. Files filed before this table existed are read
-- when they are first listed.
CREATE TABLE admin.fatture (
    fat_codice INTEGER NOT NULL,
    fat_documento INTEGER NOT NULL CHECK (fat_documento > 0),
    fat_documenti INTEGER NOT NULL DEFAULT 1,
    fat_anno INTEGER NOT NULL DEFAULT 0,
    fat_fname VARCHAR(200) NOT NULL DEFAULT '',
    fat_acquisita TIMESTAMP NOT NULL,
    fat_cedente VARCHAR(200) NOT NULL DEFAULT '',
    fat_piva VARCHAR(30) NOT NULL DEFAULT '',
    fat_codfis VARCHAR(28) NOT NULL DEFAULT '',
    fat_tipo VARCHAR(4) NOT NULL DEFAULT '',
    fat_numero VARCHAR(60) NOT NULL DEFAULT '',
    fat_data DATE,
    fat_totale DOUBLE PRECISION NOT NULL DEFAULT 0,
    fat_firmata SMALLINT NOT NULL DEFAULT 0 CHECK (fat_firmata IN (0, 1)),
    fat_sdi VARCHAR(36) NOT NULL DEFAULT '',
    fat_guasto VARCHAR(300) NOT NULL DEFAULT '',
    PRIMARY KEY (fat_codice, fat_documento),
    FOREIGN KEY (fat_codice) REFERENCES admin.allegati (all_codice) ON DELETE CASCADE
);
CREATE INDEX fatture_acquisita ON admin.fatture (fat_acquisita, fat_codice, fat_documento);
CREATE INDEX fatture_piva ON admin.fatture (fat_piva, fat_numero);

-- What was taken up from a provider's folder, so that nothing is taken up twice.
CREATE TABLE admin.sincro (
    syn_codice INTEGER NOT NULL PRIMARY KEY CHECK (syn_codice > 0),
    syn_nome VARCHAR(400) NOT NULL,
    syn_impronta VARCHAR(64) NOT NULL,
    syn_versione VARCHAR(60) NOT NULL DEFAULT '',
    syn_esito INTEGER NOT NULL,
    syn_testo VARCHAR(300) NOT NULL DEFAULT '',
    syn_quando TIMESTAMP NOT NULL
);
CREATE UNIQUE INDEX sincro_file ON admin.sincro (syn_nome, syn_impronta);

-- The warehouse as far as an invoice loads it: articles, what each supplier calls them, documents and their rows.
CREATE TABLE admin.articoli (
    art_codice VARCHAR(20) NOT NULL PRIMARY KEY,
    art_desc VARCHAR(80) NOT NULL DEFAULT '',
    art_um VARCHAR(10) NOT NULL DEFAULT '',
    art_ean VARCHAR(35) NOT NULL DEFAULT ''
);
CREATE INDEX articoli_ean ON admin.articoli (art_ean);

CREATE TABLE admin.artforn (
    arf_fornitore INTEGER NOT NULL REFERENCES admin.fornito1 (for_codice) ON DELETE CASCADE,
    arf_codice VARCHAR(35) NOT NULL,
    arf_articolo VARCHAR(20) NOT NULL REFERENCES admin.articoli (art_codice) ON DELETE CASCADE,
    PRIMARY KEY (arf_fornitore, arf_codice)
);

CREATE TABLE admin.caumag (
    cam_codice INTEGER NOT NULL PRIMARY KEY CHECK (cam_codice > 0),
    cam_desc VARCHAR(30) NOT NULL DEFAULT '',
    cam_tipo VARCHAR(1) NOT NULL DEFAULT 'C' CHECK (cam_tipo IN ('C', 'S'))
);

ALTER TABLE admin.testate1 ADD COLUMN tes_cau INTEGER REFERENCES admin.caumag (cam_codice);
ALTER TABLE admin.testate1 ADD COLUMN tes_data DATE;
ALTER TABLE admin.testate1 ADD COLUMN tes_rif VARCHAR(60) NOT NULL DEFAULT '';
ALTER TABLE admin.testate1 ADD COLUMN tes_totale DOUBLE PRECISION NOT NULL DEFAULT 0;

CREATE TABLE admin.righe1 (
    rig_codice INTEGER NOT NULL REFERENCES admin.testate1 (tes_codice) ON DELETE CASCADE,
    rig_idx INTEGER NOT NULL CHECK (rig_idx > 0),
    rig_articolo VARCHAR(20) NOT NULL REFERENCES admin.articoli (art_codice),
    rig_desc VARCHAR(250) NOT NULL DEFAULT '',
    rig_um VARCHAR(10) NOT NULL DEFAULT '',
    rig_qta DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_prezzo DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_sconto_1 DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_sconto_2 DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_sconto_3 DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_importo DOUBLE PRECISION NOT NULL DEFAULT 0,
    rig_aliquota DOUBLE PRECISION NOT NULL DEFAULT 0,
    PRIMARY KEY (rig_codice, rig_idx)
);
CREATE INDEX righe1_articolo ON admin.righe1 (rig_articolo);

ALTER TABLE admin.flag ADD COLUMN flg_cau_magazzino INTEGER NOT NULL DEFAULT 0;
ALTER TABLE admin.flag ADD COLUMN flg_sdi_cartella VARCHAR(250) NOT NULL DEFAULT '';
