-- The archive of one company, for both engines from one text: what SQLite spells differently (BYTEA, the schema in
-- REFERENCES and CREATE INDEX, EXTRACT) is translated when the statement is prepared.
--
-- Codes that point to another table are NULL when there is none, so that a foreign key can watch them. A counterpart is
-- a customer or a supplier by its kind (0, 1): the generated columns *_cliente and *_fornitore exist only so that each
-- of the two has its foreign key. Flags are 0 and 1. Amounts are euro with two decimals.

CREATE TABLE admin.versione (
    ver_numero INTEGER NOT NULL PRIMARY KEY,
    ver_data DATE NOT NULL,
    ver_programma VARCHAR(20) NOT NULL
);

-- ---------------------------------------------------------------------------------------------- tables of the country

CREATE TABLE admin.nazioni (
    naz_codice VARCHAR(2) NOT NULL PRIMARY KEY,
    naz_desc VARCHAR(60) NOT NULL,
    naz_ue SMALLINT NOT NULL DEFAULT 0,
    naz_stato_estero VARCHAR(3) NOT NULL DEFAULT '',
    naz_luogo_nascita VARCHAR(4) NOT NULL DEFAULT ''
);

CREATE TABLE admin.province (
    prv_codice VARCHAR(2) NOT NULL PRIMARY KEY,
    prv_desc VARCHAR(40) NOT NULL,
    prv_attuale SMALLINT NOT NULL DEFAULT 1
);

-- -------------------------------------------------------------------------------------------------- chart of accounts

CREATE TABLE admin.mastri (
    mas_codice INTEGER NOT NULL PRIMARY KEY CHECK (mas_codice > 0),
    mas_desc VARCHAR(91) NOT NULL,
    mas_cli SMALLINT NOT NULL DEFAULT 0 CHECK (mas_cli IN (0, 1)),
    mas_for SMALLINT NOT NULL DEFAULT 0 CHECK (mas_for IN (0, 1))
);

CREATE TABLE admin.conti (
    con_mas INTEGER NOT NULL,
    con_codice INTEGER NOT NULL CHECK (con_codice > 0),
    con_desc VARCHAR(91) NOT NULL,
    con_cli SMALLINT NOT NULL DEFAULT 0 CHECK (con_cli IN (0, 1)),
    con_for SMALLINT NOT NULL DEFAULT 0 CHECK (con_for IN (0, 1)),
    PRIMARY KEY (con_mas, con_codice),
    FOREIGN KEY (con_mas) REFERENCES admin.mastri (mas_codice)
);

CREATE TABLE admin.sotcon (
    sot_mas INTEGER NOT NULL,
    sot_con INTEGER NOT NULL,
    sot_codice INTEGER NOT NULL CHECK (sot_codice > 0),
    sot_desc VARCHAR(91) NOT NULL,
    sot_desc1 VARCHAR(40) NOT NULL DEFAULT '',
    sot_tipo VARCHAR(1) NOT NULL CHECK (sot_tipo IN ('A', 'P', 'C', 'R', 'T')),
    PRIMARY KEY (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (sot_mas, sot_con) REFERENCES admin.conti (con_mas, con_codice)
);

-- ------------------------------------------------------------------------------------------ tables that drive entries

CREATE TABLE admin.sezioni (
    sez_codice INTEGER NOT NULL PRIMARY KEY CHECK (sez_codice > 0),
    sez_desc VARCHAR(40) NOT NULL,
    sez_esc_liq_iva SMALLINT NOT NULL DEFAULT 0 CHECK (sez_esc_liq_iva IN (0, 1)),
    sez_esc_spesometro SMALLINT NOT NULL DEFAULT 0 CHECK (sez_esc_spesometro IN (0, 1)),
    sez_esc_ventilazione SMALLINT NOT NULL DEFAULT 0 CHECK (sez_esc_ventilazione IN (0, 1))
);

CREATE TABLE admin.codiva (
    iva_codice INTEGER NOT NULL PRIMARY KEY CHECK (iva_codice > 0),
    iva_desc VARCHAR(60) NOT NULL,
    iva_aliq DOUBLE PRECISION NOT NULL DEFAULT 0 CHECK (iva_aliq BETWEEN 0 AND 100),
    iva_tip INTEGER NOT NULL CHECK (iva_tip BETWEEN 1 AND 14),
    iva_inded DOUBLE PRECISION NOT NULL DEFAULT 0 CHECK (iva_inded BETWEEN 0 AND 100),
    iva_aliq_default SMALLINT NOT NULL DEFAULT 0 CHECK (iva_aliq_default IN (0, 1)),
    iva_natura VARCHAR(4) NOT NULL DEFAULT ''
);
CREATE INDEX codiva_aliquota ON admin.codiva (iva_aliq, iva_tip, iva_aliq_default);

CREATE TABLE admin.pagament (
    pag_codice INTEGER NOT NULL PRIMARY KEY CHECK (pag_codice > 0),
    pag_desc VARCHAR(30) NOT NULL,
    pag_tipo_pag INTEGER NOT NULL DEFAULT 0,
    pag_tipo VARCHAR(20) NOT NULL DEFAULT '',
    pag_genera SMALLINT NOT NULL DEFAULT 1 CHECK (pag_genera IN (0, 1)),
    pag_ini VARCHAR(12) NOT NULL DEFAULT 'DATA FATTURA',
    pag_gg_ini INTEGER NOT NULL DEFAULT 0 CHECK (pag_gg_ini >= 0),
    pag_gg_int INTEGER NOT NULL DEFAULT 0 CHECK (pag_gg_int >= 0),
    pag_num_rate INTEGER NOT NULL DEFAULT 1 CHECK (pag_num_rate BETWEEN 0 AND 60),
    pag_mese_esc_1 VARCHAR(9) NOT NULL DEFAULT '',
    pag_mese_esc_2 VARCHAR(9) NOT NULL DEFAULT '',
    pag_mese_esc_3 VARCHAR(9) NOT NULL DEFAULT '',
    pag_rate_uguali SMALLINT NOT NULL DEFAULT 0 CHECK (pag_rate_uguali IN (0, 1)),
    pag_iva_separata SMALLINT NOT NULL DEFAULT 0 CHECK (pag_iva_separata IN (0, 1)),
    pag_gg_fisso_1 INTEGER NOT NULL DEFAULT 0 CHECK (pag_gg_fisso_1 BETWEEN 0 AND 31),
    pag_gg_fisso_2 INTEGER NOT NULL DEFAULT 0 CHECK (pag_gg_fisso_2 BETWEEN 0 AND 31)
);

CREATE TABLE admin.banche1 (
    ban_codice INTEGER NOT NULL PRIMARY KEY CHECK (ban_codice > 0),
    ban_desc VARCHAR(40) NOT NULL,
    ban_abi VARCHAR(5) NOT NULL DEFAULT '',
    ban_cab VARCHAR(5) NOT NULL DEFAULT '',
    ban_iban VARCHAR(34) NOT NULL DEFAULT '',
    ban_bic VARCHAR(11) NOT NULL DEFAULT '',
    ban_mas INTEGER,
    ban_con INTEGER,
    ban_sot INTEGER,
    FOREIGN KEY (ban_mas, ban_con, ban_sot) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice)
);

CREATE TABLE admin.agenti1 (
    age_codice INTEGER NOT NULL PRIMARY KEY CHECK (age_codice > 0),
    age_desc VARCHAR(60) NOT NULL
);

CREATE TABLE admin.centri1 (
    cdc_codice INTEGER NOT NULL PRIMARY KEY CHECK (cdc_codice > 0),
    cdc_desc VARCHAR(40) NOT NULL
);

CREATE TABLE admin.caucont1 (
    cac_codice INTEGER NOT NULL PRIMARY KEY CHECK (cac_codice > 0),
    cac_desc VARCHAR(30) NOT NULL,
    cac_reg INTEGER NOT NULL CHECK (cac_reg BETWEEN 1 AND 7),
    cac_rel INTEGER NOT NULL DEFAULT 2 CHECK (cac_rel IN (0, 1, 2)),
    cac_iva SMALLINT NOT NULL DEFAULT 0 CHECK (cac_iva IN (0, 1)),
    cac_iva_sosp SMALLINT NOT NULL DEFAULT 0 CHECK (cac_iva_sosp IN (0, 1)),
    cac_sez INTEGER,
    cac_tipo_documento INTEGER NOT NULL DEFAULT 0,
    cac_nota_variazione INTEGER NOT NULL DEFAULT 0,
    cac_allegati SMALLINT NOT NULL DEFAULT 0 CHECK (cac_allegati IN (0, 1)),
    FOREIGN KEY (cac_sez) REFERENCES admin.sezioni (sez_codice)
);

-- The template rows of a causale, up to twenty. Sub-account 0: the counterpart's, or left to the user.
CREATE TABLE admin.caucontr (
    car_cau INTEGER NOT NULL,
    car_idx INTEGER NOT NULL CHECK (car_idx BETWEEN 1 AND 20),
    car_mas INTEGER NOT NULL DEFAULT 0,
    car_con INTEGER NOT NULL DEFAULT 0,
    car_sot INTEGER NOT NULL DEFAULT 0,
    car_tipo INTEGER NOT NULL DEFAULT 2,
    car_auto SMALLINT NOT NULL DEFAULT 1 CHECK (car_auto IN (0, 1)),
    PRIMARY KEY (car_cau, car_idx),
    FOREIGN KEY (car_cau) REFERENCES admin.caucont1 (cac_codice) ON DELETE CASCADE
);

-- --------------------------------------------------------------------------------------------- customers and suppliers

CREATE TABLE admin.clienti1 (
    cli_codice INTEGER NOT NULL PRIMARY KEY CHECK (cli_codice > 0),
    cli_desc VARCHAR(91) NOT NULL,
    cli_rag_soc1 VARCHAR(60) NOT NULL DEFAULT '',
    cli_rag_soc2 VARCHAR(60) NOT NULL DEFAULT '',
    cli_pers VARCHAR(1) NOT NULL DEFAULT 'G' CHECK (cli_pers IN ('F', 'G')),
    cli_ditta_ind SMALLINT NOT NULL DEFAULT 0 CHECK (cli_ditta_ind IN (0, 1)),
    cli_indirizzo VARCHAR(70) NOT NULL DEFAULT '',
    cli_cap VARCHAR(10) NOT NULL DEFAULT '',
    cli_citta VARCHAR(60) NOT NULL DEFAULT '',
    cli_prov VARCHAR(2) NOT NULL DEFAULT '',
    cli_naz VARCHAR(2) NOT NULL DEFAULT 'IT',
    cli_piva VARCHAR(28) NOT NULL DEFAULT '',
    cli_codfis VARCHAR(16) NOT NULL DEFAULT '',
    cli_telefono VARCHAR(20) NOT NULL DEFAULT '',
    cli_email VARCHAR(100) NOT NULL DEFAULT '',
    cli_pec VARCHAR(100) NOT NULL DEFAULT '',
    cli_cod_dest VARCHAR(7) NOT NULL DEFAULT '',
    cli_iban VARCHAR(34) NOT NULL DEFAULT '',
    cli_mas INTEGER,
    cli_con INTEGER,
    cli_pag INTEGER,
    cli_ban INTEGER,
    cli_age INTEGER,
    cli_data_cessazione DATE,
    cli_escludi_iva SMALLINT NOT NULL DEFAULT 0 CHECK (cli_escludi_iva IN (0, 1)),
    FOREIGN KEY (cli_mas, cli_con) REFERENCES admin.conti (con_mas, con_codice),
    FOREIGN KEY (cli_pag) REFERENCES admin.pagament (pag_codice),
    FOREIGN KEY (cli_ban) REFERENCES admin.banche1 (ban_codice),
    FOREIGN KEY (cli_age) REFERENCES admin.agenti1 (age_codice)
);
CREATE INDEX clienti1_desc ON admin.clienti1 (cli_desc, cli_codice);
CREATE INDEX clienti1_piva ON admin.clienti1 (cli_piva, cli_codice);
CREATE INDEX clienti1_codfis ON admin.clienti1 (cli_codfis, cli_codice);

CREATE TABLE admin.fornito1 (
    for_codice INTEGER NOT NULL PRIMARY KEY CHECK (for_codice > 0),
    for_desc VARCHAR(91) NOT NULL,
    for_rag_soc1 VARCHAR(60) NOT NULL DEFAULT '',
    for_rag_soc2 VARCHAR(60) NOT NULL DEFAULT '',
    for_pers VARCHAR(1) NOT NULL DEFAULT 'G' CHECK (for_pers IN ('F', 'G')),
    for_ditta_ind SMALLINT NOT NULL DEFAULT 0 CHECK (for_ditta_ind IN (0, 1)),
    for_indirizzo VARCHAR(70) NOT NULL DEFAULT '',
    for_cap VARCHAR(10) NOT NULL DEFAULT '',
    for_citta VARCHAR(60) NOT NULL DEFAULT '',
    for_prov VARCHAR(2) NOT NULL DEFAULT '',
    for_naz VARCHAR(2) NOT NULL DEFAULT 'IT',
    for_piva VARCHAR(28) NOT NULL DEFAULT '',
    for_codfis VARCHAR(16) NOT NULL DEFAULT '',
    for_telefono VARCHAR(20) NOT NULL DEFAULT '',
    for_email VARCHAR(100) NOT NULL DEFAULT '',
    for_pec VARCHAR(100) NOT NULL DEFAULT '',
    for_iban VARCHAR(34) NOT NULL DEFAULT '',
    for_rea VARCHAR(23) NOT NULL DEFAULT '',
    for_socio_unico VARCHAR(2) NOT NULL DEFAULT '',
    for_stato_liq VARCHAR(2) NOT NULL DEFAULT '',
    for_mas INTEGER,
    for_con INTEGER,
    for_cau INTEGER,
    for_pag INTEGER,
    for_ban INTEGER,
    for_data_cessazione DATE,
    for_escludi_iva SMALLINT NOT NULL DEFAULT 0 CHECK (for_escludi_iva IN (0, 1)),
    FOREIGN KEY (for_mas, for_con) REFERENCES admin.conti (con_mas, con_codice),
    FOREIGN KEY (for_cau) REFERENCES admin.caucont1 (cac_codice),
    FOREIGN KEY (for_pag) REFERENCES admin.pagament (pag_codice),
    FOREIGN KEY (for_ban) REFERENCES admin.banche1 (ban_codice)
);
CREATE INDEX fornito1_desc ON admin.fornito1 (for_desc, for_codice);
CREATE INDEX fornito1_piva ON admin.fornito1 (for_piva, for_codice);
CREATE INDEX fornito1_codfis ON admin.fornito1 (for_codfis, for_codice);

-- Destinations (places of delivery) of a customer or supplier.
CREATE TABLE admin.destina1 (
    dst_rel INTEGER NOT NULL CHECK (dst_rel IN (0, 1)),
    dst_cli_for INTEGER NOT NULL,
    dst_codice INTEGER NOT NULL CHECK (dst_codice > 0),
    dst_desc VARCHAR(60) NOT NULL,
    dst_indirizzo VARCHAR(70) NOT NULL DEFAULT '',
    dst_cap VARCHAR(10) NOT NULL DEFAULT '',
    dst_citta VARCHAR(60) NOT NULL DEFAULT '',
    dst_prov VARCHAR(2) NOT NULL DEFAULT '',
    PRIMARY KEY (dst_rel, dst_cli_for, dst_codice)
);

-- ---------------------------------------------------------------------------------------------------------- the company

CREATE TABLE admin.ditte (
    dit_codice INTEGER NOT NULL PRIMARY KEY CHECK (dit_codice > 0),
    dit_desc VARCHAR(80) NOT NULL,
    dit_pers VARCHAR(1) NOT NULL DEFAULT 'G' CHECK (dit_pers IN ('F', 'G')),
    dit_cognome VARCHAR(60) NOT NULL DEFAULT '',
    dit_nome VARCHAR(60) NOT NULL DEFAULT '',
    dit_indirizzo VARCHAR(70) NOT NULL DEFAULT '',
    dit_cap VARCHAR(5) NOT NULL DEFAULT '',
    dit_citta VARCHAR(60) NOT NULL DEFAULT '',
    dit_prov VARCHAR(2) NOT NULL DEFAULT '',
    dit_naz VARCHAR(2) NOT NULL DEFAULT 'IT',
    dit_piva VARCHAR(28) NOT NULL DEFAULT '',
    dit_codfis VARCHAR(16) NOT NULL DEFAULT '',
    dit_anno INTEGER NOT NULL CHECK (dit_anno BETWEEN 1980 AND 9999),
    dit_fuori_anno SMALLINT NOT NULL DEFAULT 0 CHECK (dit_fuori_anno IN (0, 1)),
    dit_periodicita VARCHAR(1) NOT NULL DEFAULT 'T' CHECK (dit_periodicita IN ('M', 'T')),
    dit_tasso_mora DOUBLE PRECISION NOT NULL DEFAULT 0 CHECK (dit_tasso_mora BETWEEN 0 AND 100),
    dit_mas_cli INTEGER NOT NULL REFERENCES admin.mastri (mas_codice),
    dit_con_cli INTEGER NOT NULL,
    dit_mas_for INTEGER NOT NULL REFERENCES admin.mastri (mas_codice),
    dit_con_for INTEGER NOT NULL,
    dit_manutenzione SMALLINT NOT NULL DEFAULT 0 CHECK (dit_manutenzione IN (0, 1)),
    FOREIGN KEY (dit_mas_cli, dit_con_cli) REFERENCES admin.conti (con_mas, con_codice),
    FOREIGN KEY (dit_mas_for, dit_con_for) REFERENCES admin.conti (con_mas, con_codice)
);

-- Settings of the company: accounts that the program itself moves, causali of automatic entries, limits.
CREATE TABLE admin.flag (
    flg_codice INTEGER NOT NULL PRIMARY KEY REFERENCES admin.ditte (dit_codice),
    flg_mas_iva_acq INTEGER, flg_con_iva_acq INTEGER, flg_sot_iva_acq INTEGER,
    flg_mas_iva_ven INTEGER, flg_con_iva_ven INTEGER, flg_sot_iva_ven INTEGER,
    flg_mas_iva_cor INTEGER, flg_con_iva_cor INTEGER, flg_sot_iva_cor INTEGER,
    flg_mas_iva_sos INTEGER, flg_con_iva_sos INTEGER, flg_sot_iva_sos INTEGER,
    flg_mas_iva_cee INTEGER, flg_con_iva_cee INTEGER, flg_sot_iva_cee INTEGER,
    flg_mas_arr_att INTEGER, flg_con_arr_att INTEGER, flg_sot_arr_att INTEGER,
    flg_mas_arr_pas INTEGER, flg_con_arr_pas INTEGER, flg_sot_arr_pas INTEGER,
    flg_arr_limite DOUBLE PRECISION NOT NULL DEFAULT 1 CHECK (flg_arr_limite >= 0),
    flg_cau_pagamento INTEGER REFERENCES admin.caucont1 (cac_codice),
    flg_cau_incasso INTEGER REFERENCES admin.caucont1 (cac_codice),
    flg_cau_effetti INTEGER REFERENCES admin.caucont1 (cac_codice),
    flg_cau_fatture INTEGER REFERENCES admin.caucont1 (cac_codice),
    flg_fatture_altro_anno SMALLINT NOT NULL DEFAULT 0 CHECK (flg_fatture_altro_anno IN (0, 1)),
    FOREIGN KEY (flg_mas_iva_acq, flg_con_iva_acq, flg_sot_iva_acq) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_iva_ven, flg_con_iva_ven, flg_sot_iva_ven) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_iva_cor, flg_con_iva_cor, flg_sot_iva_cor) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_iva_sos, flg_con_iva_sos, flg_sot_iva_sos) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_iva_cee, flg_con_iva_cee, flg_sot_iva_cee) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_arr_att, flg_con_arr_att, flg_sot_arr_att) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (flg_mas_arr_pas, flg_con_arr_pas, flg_sot_arr_pas) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice)
);

-- --------------------------------------------------------------------------------------------------------- the journal

CREATE TABLE admin.aggregaz (
    agr_codice INTEGER NOT NULL PRIMARY KEY CHECK (agr_codice > 0),
    agr_desc VARCHAR(60) NOT NULL DEFAULT ''
);

CREATE TABLE admin.pnota1 (
    pno_codice INTEGER NOT NULL PRIMARY KEY CHECK (pno_codice > 0),
    pno_data DATE NOT NULL,
    pno_cau INTEGER NOT NULL REFERENCES admin.caucont1 (cac_codice),
    pno_des_cau VARCHAR(30) NOT NULL DEFAULT '',
    pno_desc VARCHAR(80) NOT NULL DEFAULT '',
    pno_doc VARCHAR(20) NOT NULL DEFAULT '',
    pno_paddoc VARCHAR(220) NOT NULL DEFAULT '',
    pno_data_doc DATE,
    pno_rel INTEGER NOT NULL DEFAULT 2 CHECK (pno_rel IN (0, 1, 2)),
    pno_cli_for INTEGER NOT NULL DEFAULT 0,
    pno_sez INTEGER NOT NULL REFERENCES admin.sezioni (sez_codice),
    pno_reg INTEGER NOT NULL CHECK (pno_reg BETWEEN 1 AND 7),
    pno_prot INTEGER CHECK (pno_prot > 0),
    pno_prot_fisso SMALLINT NOT NULL DEFAULT 0 CHECK (pno_prot_fisso IN (0, 1)),
    pno_cau_iva SMALLINT NOT NULL DEFAULT 0 CHECK (pno_cau_iva IN (0, 1)),
    pno_iva_sosp SMALLINT NOT NULL DEFAULT 0 CHECK (pno_iva_sosp IN (0, 1)),
    pno_pag INTEGER REFERENCES admin.pagament (pag_codice),
    pno_data_pag DATE,
    pno_data_ret DATE,
    pno_iva_0 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_0 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_0 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_0 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_0 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_0 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_1 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_1 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_1 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_1 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_1 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_1 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_2 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_2 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_2 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_2 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_2 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_2 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_3 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_3 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_3 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_3 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_3 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_3 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_4 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_4 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_4 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_4 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_4 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_4 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_5 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_5 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_5 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_5 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_5 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_5 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_iva_6 INTEGER REFERENCES admin.codiva (iva_codice), pno_tip_6 INTEGER NOT NULL DEFAULT 0,
    pno_aliq_6 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_impo_6 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_imposta_6 DOUBLE PRECISION NOT NULL DEFAULT 0, pno_ind_6 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_doc DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_imp DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_iva DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_esente DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_non_imp DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_tot_non_82 DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_dare DOUBLE PRECISION NOT NULL DEFAULT 0 CHECK (pno_dare >= 0),
    pno_avere DOUBLE PRECISION NOT NULL DEFAULT 0 CHECK (pno_avere >= 0),
    pno_tot_squ DOUBLE PRECISION NOT NULL DEFAULT 0,
    pno_operazione INTEGER NOT NULL DEFAULT 0 CHECK (pno_operazione BETWEEN 0 AND 3),
    pno_verifica SMALLINT NOT NULL DEFAULT 0 CHECK (pno_verifica IN (0, 1)),
    pno_trasf SMALLINT NOT NULL DEFAULT 0 CHECK (pno_trasf IN (0, 1)),
    pno_split_payment SMALLINT NOT NULL DEFAULT 0 CHECK (pno_split_payment IN (0, 1)),
    pno_esc_spesometro SMALLINT NOT NULL DEFAULT 0 CHECK (pno_esc_spesometro IN (0, 1)),
    pno_agr INTEGER REFERENCES admin.aggregaz (agr_codice),
    pno_all INTEGER,
    pno_all_doc INTEGER NOT NULL DEFAULT 0,
    pno_utente VARCHAR(40) NOT NULL DEFAULT '',
    pno_creato TIMESTAMP,
    pno_aggiornato TIMESTAMP,
    pno_revisione INTEGER NOT NULL DEFAULT 0,
    pno_cliente INTEGER GENERATED ALWAYS AS (CASE WHEN pno_rel = 0 AND pno_cli_for <> 0 THEN pno_cli_for END) STORED,
    pno_fornitore INTEGER GENERATED ALWAYS AS (CASE WHEN pno_rel = 1 AND pno_cli_for <> 0 THEN pno_cli_for END) STORED,
    CHECK (pno_reg > 1 OR pno_prot IS NULL),
    FOREIGN KEY (pno_cliente) REFERENCES admin.clienti1 (cli_codice),
    FOREIGN KEY (pno_fornitore) REFERENCES admin.fornito1 (for_codice)
);
-- The year comes first: it serves the year filters of every report as well as the next protocol.
CREATE UNIQUE INDEX pnota1_protocollo ON admin.pnota1 (EXTRACT(YEAR FROM pno_data), pno_sez, pno_reg, pno_prot);
CREATE INDEX pnota1_data ON admin.pnota1 (pno_data, pno_codice);
CREATE INDEX pnota1_data_doc ON admin.pnota1 (pno_data_doc, pno_codice);
CREATE INDEX pnota1_doc ON admin.pnota1 (pno_doc, pno_codice);
CREATE INDEX pnota1_causale ON admin.pnota1 (pno_cau, pno_data, pno_codice);
CREATE INDEX pnota1_clifor ON admin.pnota1 (pno_rel, pno_cli_for, pno_data, pno_codice);
CREATE INDEX pnota1_documento ON admin.pnota1 (pno_reg, pno_cli_for, pno_doc);
CREATE INDEX pnota1_fattura ON admin.pnota1 (pno_all, pno_all_doc);
CREATE INDEX pnota1_operazione ON admin.pnota1 (pno_operazione, pno_data);
CREATE INDEX pnota1_registro ON admin.pnota1 (pno_reg, pno_data, pno_paddoc, pno_data_doc, pno_codice);

-- A row stands either on a sub-account of the chart (row_clfo 0) or on a customer or supplier (row_clfo is its code, and
-- the sub-account too; row_rel says which of the two). row_base is the side on which a positive amount of the row
-- stands, so that a recomputed credit note can swap the sides and swap them back.
CREATE TABLE admin.pnotaro2 (
    row_codice INTEGER NOT NULL,
    row_idx INTEGER NOT NULL CHECK (row_idx BETWEEN 1 AND 100),
    row_mas INTEGER NOT NULL CHECK (row_mas > 0),
    row_con INTEGER NOT NULL CHECK (row_con > 0),
    row_sot INTEGER NOT NULL CHECK (row_sot > 0),
    row_tipo VARCHAR(1) NOT NULL CHECK (row_tipo IN ('D', 'A', 'd', 'a')),
    row_base VARCHAR(1) NOT NULL DEFAULT '' CHECK (row_base IN ('D', 'A', '')),
    row_importo DOUBLE PRECISION NOT NULL CHECK (row_importo >= 0),
    row_data DATE NOT NULL,
    row_cau INTEGER REFERENCES admin.caucont1 (cac_codice),
    row_descac VARCHAR(250) NOT NULL DEFAULT '',
    row_n_doc VARCHAR(20) NOT NULL DEFAULT '',
    row_d_doc DATE,
    row_sez INTEGER NOT NULL,
    row_rel INTEGER NOT NULL DEFAULT 2 CHECK (row_rel IN (0, 1, 2)),
    row_clfo INTEGER NOT NULL DEFAULT 0,
    row_auto SMALLINT NOT NULL DEFAULT 0 CHECK (row_auto IN (0, 1)),
    row_operazione INTEGER NOT NULL DEFAULT 0 CHECK (row_operazione BETWEEN 0 AND 3),
    row_cliente INTEGER GENERATED ALWAYS AS (CASE WHEN row_rel = 0 AND row_clfo <> 0 THEN row_clfo END) STORED,
    row_fornitore INTEGER GENERATED ALWAYS AS (CASE WHEN row_rel = 1 AND row_clfo <> 0 THEN row_clfo END) STORED,
    row_conto INTEGER GENERATED ALWAYS AS (CASE WHEN row_clfo = 0 THEN row_sot END) STORED,
    PRIMARY KEY (row_codice, row_idx),
    CHECK (row_clfo = 0 OR (row_clfo = row_sot AND row_rel IN (0, 1))),
    FOREIGN KEY (row_codice) REFERENCES admin.pnota1 (pno_codice) ON DELETE CASCADE,
    FOREIGN KEY (row_mas, row_con) REFERENCES admin.conti (con_mas, con_codice),
    FOREIGN KEY (row_mas, row_con, row_conto) REFERENCES admin.sotcon (sot_mas, sot_con, sot_codice),
    FOREIGN KEY (row_cliente) REFERENCES admin.clienti1 (cli_codice),
    FOREIGN KEY (row_fornitore) REFERENCES admin.fornito1 (for_codice)
);
CREATE INDEX pnotaro2_conto ON admin.pnotaro2 (row_mas, row_con, row_sot, row_data);
CREATE INDEX pnotaro2_data ON admin.pnotaro2 (row_data);

-- Cost-centre lines: each divides a part of one row's amount.
CREATE TABLE admin.pnotacdc (
    pcc_pno INTEGER NOT NULL,
    pcc_idx INTEGER NOT NULL CHECK (pcc_idx BETWEEN 1 AND 250),
    pcc_riga INTEGER NOT NULL,
    pcc_cdc INTEGER NOT NULL REFERENCES admin.centri1 (cdc_codice),
    pcc_importo DOUBLE PRECISION NOT NULL,
    PRIMARY KEY (pcc_pno, pcc_idx),
    FOREIGN KEY (pcc_pno, pcc_riga) REFERENCES admin.pnotaro2 (row_codice, row_idx) ON DELETE CASCADE
);

CREATE TABLE admin.pnotacoi (
    coi_codice INTEGER NOT NULL PRIMARY KEY CHECK (coi_codice > 0),
    coi_pno INTEGER NOT NULL REFERENCES admin.pnota1 (pno_codice) ON DELETE CASCADE,
    coi_data DATE,
    coi_rel INTEGER NOT NULL DEFAULT 0 CHECK (coi_rel IN (0, 1)),
    coi_cli_for INTEGER NOT NULL DEFAULT 0,
    coi_importo DOUBLE PRECISION NOT NULL DEFAULT 0
);
CREATE INDEX pnotacoi_pno ON admin.pnotacoi (coi_pno);

CREATE TABLE admin.pnotacor (
    cor_data DATE NOT NULL,
    cor_sez INTEGER NOT NULL REFERENCES admin.sezioni (sez_codice),
    cor_pno INTEGER REFERENCES admin.pnota1 (pno_codice) ON DELETE SET NULL,
    cor_importo DOUBLE PRECISION NOT NULL DEFAULT 0,
    PRIMARY KEY (cor_data, cor_sez)
);

CREATE TABLE admin.pnotaall (
    pat_codice INTEGER NOT NULL PRIMARY KEY CHECK (pat_codice > 0),
    pat_pno INTEGER NOT NULL REFERENCES admin.pnota1 (pno_codice) ON DELETE CASCADE,
    pat_desc VARCHAR(100) NOT NULL DEFAULT '',
    pat_fname VARCHAR(200) NOT NULL,
    pat_user VARCHAR(40) NOT NULL DEFAULT '',
    pat_bytes_size INTEGER NOT NULL CHECK (pat_bytes_size >= 0),
    pat_created_at TIMESTAMP NOT NULL,
    pat_last_update TIMESTAMP,
    pat_data BYTEA NOT NULL
);
CREATE INDEX pnotaall_pno ON admin.pnotaall (pat_pno);

CREATE TABLE admin.pnotaim1 (
    pni_codice INTEGER NOT NULL PRIMARY KEY REFERENCES admin.pnota1 (pno_codice) ON DELETE CASCADE,
    pni_formato VARCHAR(10) NOT NULL DEFAULT '',
    pni_data BYTEA NOT NULL
);

-- Documents filed by year. all_impronta is the SHA-256 of the content (of the XML inside, for a signed invoice), so that
-- the same document is known again under another name or without its signature.
CREATE TABLE admin.allegati (
    all_codice INTEGER NOT NULL CHECK (all_codice > 0),
    all_anno INTEGER NOT NULL,
    all_tab_tipo INTEGER NOT NULL DEFAULT 0,
    all_tab_codice INTEGER NOT NULL DEFAULT 0,
    all_desc VARCHAR(100) NOT NULL DEFAULT '',
    all_fname VARCHAR(200) NOT NULL,
    all_user VARCHAR(40) NOT NULL DEFAULT '',
    all_escludi SMALLINT NOT NULL DEFAULT 0 CHECK (all_escludi IN (0, 1)),
    all_num_fat VARCHAR(20) NOT NULL DEFAULT '',
    all_data_fat DATE,
    all_bytes_size INTEGER NOT NULL CHECK (all_bytes_size >= 0),
    all_date_time TIMESTAMP NOT NULL,
    all_last_update TIMESTAMP,
    all_impronta VARCHAR(64),
    all_data BYTEA NOT NULL,
    PRIMARY KEY (all_anno, all_codice)
);
CREATE UNIQUE INDEX allegati_codice ON admin.allegati (all_codice);
CREATE INDEX allegati_tipo ON admin.allegati (all_tab_tipo, all_date_time);
CREATE INDEX allegati_nome ON admin.allegati (all_fname, all_anno);
CREATE UNIQUE INDEX allegati_impronta ON admin.allegati (all_impronta, all_tab_tipo);

-- -------------------------------------------------------------------------------------------------------- the schedule

CREATE TABLE admin.scadenze (
    sca_relaz INTEGER NOT NULL CHECK (sca_relaz IN (0, 1)),
    sca_num INTEGER NOT NULL CHECK (sca_num > 0),
    sca_anno INTEGER NOT NULL,
    sca_sez INTEGER REFERENCES admin.sezioni (sez_codice),
    sca_cli_for INTEGER NOT NULL CHECK (sca_cli_for > 0),
    sca_data DATE NOT NULL,
    sca_importo DOUBLE PRECISION NOT NULL,
    sca_pag INTEGER REFERENCES admin.pagament (pag_codice),
    sca_tipo_pag INTEGER NOT NULL DEFAULT 0,
    sca_ban INTEGER REFERENCES admin.banche1 (ban_codice),
    sca_pagato INTEGER NOT NULL DEFAULT 0,
    sca_data_pag DATE,
    sca_emessa DATE,
    sca_fattura VARCHAR(20) NOT NULL DEFAULT '',
    sca_data_fattura DATE,
    sca_desc VARCHAR(80) NOT NULL DEFAULT '',
    sca_dst INTEGER,
    sca_age INTEGER REFERENCES admin.agenti1 (age_codice),
    sca_parked INTEGER NOT NULL DEFAULT 0,
    sca_printed INTEGER NOT NULL DEFAULT 0,
    sca_rata INTEGER NOT NULL DEFAULT 0,
    sca_rate INTEGER NOT NULL DEFAULT 0,
    sca_ultima SMALLINT NOT NULL DEFAULT 0 CHECK (sca_ultima IN (0, 1)),
    sca_non_ultima SMALLINT NOT NULL DEFAULT 1 CHECK (sca_non_ultima IN (0, 1)),
    sca_tot_fat DOUBLE PRECISION NOT NULL DEFAULT 0,
    sca_pno INTEGER REFERENCES admin.pnota1 (pno_codice),
    sca_cliente INTEGER GENERATED ALWAYS AS (CASE WHEN sca_relaz = 0 THEN sca_cli_for END) STORED,
    sca_fornitore INTEGER GENERATED ALWAYS AS (CASE WHEN sca_relaz = 1 THEN sca_cli_for END) STORED,
    PRIMARY KEY (sca_relaz, sca_num),
    CHECK (sca_ultima + sca_non_ultima = 1),
    FOREIGN KEY (sca_cliente) REFERENCES admin.clienti1 (cli_codice),
    FOREIGN KEY (sca_fornitore) REFERENCES admin.fornito1 (for_codice)
);
CREATE INDEX scadenze_data ON admin.scadenze (sca_relaz, sca_data, sca_num);
CREATE INDEX scadenze_clifor ON admin.scadenze (sca_relaz, sca_cli_for, sca_pagato, sca_data);
CREATE INDEX scadenze_pno ON admin.scadenze (sca_pno);

-- Heads of warehouse documents, as far as the registration of invoices asks for them.
CREATE TABLE admin.testate1 (
    tes_codice INTEGER NOT NULL PRIMARY KEY CHECK (tes_codice > 0),
    tes_anno INTEGER NOT NULL,
    tes_cod_for INTEGER NOT NULL REFERENCES admin.fornito1 (for_codice),
    tes_n_fat VARCHAR(20) NOT NULL DEFAULT '',
    tes_d_fat DATE
);
CREATE INDEX testate1_fattura ON admin.testate1 (tes_cod_for, tes_n_fat, tes_d_fat);

-- ------------------------------------------------------------------------------------------------------ derived figures

-- Views, not copies: a total that is stored beside the journal is one day a different total. The deductible part of a
-- tax is rounded and the non-deductible one is what is left; VAT codes of kind 5 deduct nothing.
CREATE VIEW admin.totiva2 AS
SELECT EXTRACT(YEAR FROM pno_data) AS tiv_anno, EXTRACT(MONTH FROM pno_data) AS tiv_mese, pno_sez AS tiv_sez,
       pno_reg AS tiv_reg, tiv_codice, ROUND(CAST(SUM(tiv_imponibile) AS NUMERIC), 2) AS tiv_imponibile,
       ROUND(CAST(SUM(tiv_imposta) AS NUMERIC), 2) AS tiv_imposta,
       ROUND(CAST(SUM(tiv_indetraibile) AS NUMERIC), 2) AS tiv_indetraibile
  FROM (SELECT pno_data, pno_sez, pno_reg, pno_iva_0 AS tiv_codice, pno_impo_0 AS tiv_imponibile,
               pno_imposta_0 AS tiv_imposta,
               CASE WHEN pno_tip_0 = 5 THEN pno_imposta_0 ELSE pno_imposta_0 - ROUND(CAST(pno_imposta_0 * (100 - pno_ind_0) / 100 AS NUMERIC), 2) END AS tiv_indetraibile
          FROM admin.pnota1 WHERE pno_iva_0 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_1, pno_impo_1, pno_imposta_1,
               CASE WHEN pno_tip_1 = 5 THEN pno_imposta_1 ELSE pno_imposta_1 - ROUND(CAST(pno_imposta_1 * (100 - pno_ind_1) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_1 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_2, pno_impo_2, pno_imposta_2,
               CASE WHEN pno_tip_2 = 5 THEN pno_imposta_2 ELSE pno_imposta_2 - ROUND(CAST(pno_imposta_2 * (100 - pno_ind_2) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_2 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_3, pno_impo_3, pno_imposta_3,
               CASE WHEN pno_tip_3 = 5 THEN pno_imposta_3 ELSE pno_imposta_3 - ROUND(CAST(pno_imposta_3 * (100 - pno_ind_3) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_3 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_4, pno_impo_4, pno_imposta_4,
               CASE WHEN pno_tip_4 = 5 THEN pno_imposta_4 ELSE pno_imposta_4 - ROUND(CAST(pno_imposta_4 * (100 - pno_ind_4) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_4 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_5, pno_impo_5, pno_imposta_5,
               CASE WHEN pno_tip_5 = 5 THEN pno_imposta_5 ELSE pno_imposta_5 - ROUND(CAST(pno_imposta_5 * (100 - pno_ind_5) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_5 IS NOT NULL
        UNION ALL
        SELECT pno_data, pno_sez, pno_reg, pno_iva_6, pno_impo_6, pno_imposta_6,
               CASE WHEN pno_tip_6 = 5 THEN pno_imposta_6 ELSE pno_imposta_6 - ROUND(CAST(pno_imposta_6 * (100 - pno_ind_6) / 100 AS NUMERIC), 2) END
          FROM admin.pnota1 WHERE pno_iva_6 IS NOT NULL) AS righe_iva
 GROUP BY EXTRACT(YEAR FROM pno_data), EXTRACT(MONTH FROM pno_data), pno_sez, pno_reg, tiv_codice;

-- tco_saldo is the balance of the year's rows (debit minus credit); tco_saldo_ann leaves the closing entries out, so it
-- still tells the year's figure after the accounts were brought to zero.
CREATE VIEW admin.totconti AS
SELECT EXTRACT(YEAR FROM row_data) AS tco_anno, row_mas AS tco_mas, row_con AS tco_con, row_sot AS tco_sot,
       ROUND(CAST(SUM(CASE WHEN row_tipo IN ('D', 'd') THEN row_importo ELSE 0 END) AS NUMERIC), 2) AS tco_dare,
       ROUND(CAST(SUM(CASE WHEN row_tipo IN ('A', 'a') THEN row_importo ELSE 0 END) AS NUMERIC), 2) AS tco_avere,
       ROUND(CAST(SUM(CASE WHEN row_tipo IN ('D', 'd') THEN row_importo ELSE -row_importo END) AS NUMERIC), 2) AS tco_saldo,
       ROUND(CAST(SUM(CASE WHEN row_operazione IN (1, 2) THEN 0 WHEN row_tipo IN ('D', 'd') THEN row_importo
                           ELSE -row_importo END) AS NUMERIC), 2) AS tco_saldo_ann
  FROM admin.pnotaro2
 GROUP BY EXTRACT(YEAR FROM row_data), row_mas, row_con, row_sot;
