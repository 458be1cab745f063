CREATE TABLE "Sensors" ("Id" INTEGER, "Id_objects" BIGINT, "Type" INTEGER);
INSERT INTO "Sensors" VALUES (9, 2, 12), (8, 2, 3), (7, 4, 5), (3, 4294967291, 65548), (4, 6, 3);
CREATE TABLE archive.lastdata (id_object BIGINT, time_unix INTEGER, sens_1 INTEGER, sens_2 TEXT, sens_3 INTEGER,
    sens_4 INTEGER, status_3 INTEGER, sens_5 TEXT, status_5 TEXT, sens_12 DOUBLE PRECISION, status_12 INTEGER,
    sens_ INTEGER, status_ INTEGER);
INSERT INTO archive.lastdata VALUES
    (1, 500, -10, '20', 30, 40, 128, '-2.5', '300', 0.1, -1, 8, 4),
    (2, 500, 11, '21', 31, 41, 7, '5', '5', 12, 12, 0, 0),
    (3, 500, NULL, 'x', NULL, NULL, NULL, 'x', 'x', NULL, NULL, NULL, NULL),
    (4, 500, 12, '22', 32, 42, 7, '5.5', '5', 12, 12, 0, 0),
    (4294967291, 500, 13, '23', 33, 43, 7, '5', '5', 12.5, 12, 0, 0);
CREATE TABLE archive.master_table AS SELECT * FROM archive.lastdata;
INSERT INTO archive.master_table (id_object, time_unix, sens_1) VALUES
    (1, 200, 2), (1, 100, 1), (1, 2147483647, 4), (2, 499, 1), (4, 501, 3), (6, 501, 3);
