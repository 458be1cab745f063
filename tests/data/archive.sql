CREATE TABLE "Sensors" ("Id" INTEGER, "Id_objects" BIGINT, "Type" INTEGER);
INSERT INTO "Sensors" VALUES (9, 2, 12), (8, 2, 3), (7, 4, 5), (3, 4294967291, 65548), (4, 6, 3);
CREATE TABLE archive.lastdata (id_object BIGINT, time_unix BIGINT, sens_1 INTEGER, sens_2 TEXT, sens_3 INTEGER,
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
INSERT INTO archive.master_table (id_object, time_unix, sens_1, sens_5, status_5, sens_12, status_12) VALUES
    (4294967286, 4294967295, 7, NULL, NULL, NULL, NULL), (4294967286, 2147483648, 6, '8', '1', 9, 2),
    (4294967286, 300, 5, NULL, '3', NULL, NULL), (4294967286, 200, 4, NULL, NULL, 0, NULL),
    (4294967286, 100, NULL, '1', '2', 3, 4), (4294967286, 0, 2, NULL, NULL, NULL, NULL),
    (4294967286, -1, 1, '1', '1', 1, 1), (4294967286, NULL, 1, '1', '1', 1, 1);
INSERT INTO archive.master_table (id_object, time_unix, sens_1)
    WITH RECURSIVE rows(n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM rows WHERE n < 29999)
    SELECT 8, 1000 + n / 2500 * 10, n FROM rows;
